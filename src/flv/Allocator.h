#pragma once

#include <cstddef>

#include "qlix_flv/qlix_flv.h"

namespace flv {

/// The memory of the library: global allocation. Outlives all handles that were made with it.
class Allocator {
public:
    virtual ~Allocator();

    /// Sets all fields; the callbacks lead to this object.
    virtual void getCallBacks(QlixFLVAllocatorCallBacks& out);
    /// Throws std::bad_alloc, which the callback turns into null.
    virtual void* allocate(std::size_t size);
    virtual void free(void* pointer);
};

}  // namespace flv
