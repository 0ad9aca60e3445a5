#pragma once

#include <cstddef>

namespace qlix::kzm {

/// Gives the memory of boxes and of the tables inside them.
///
/// The base class uses the global heap. Where an allocator pointer is null, the library uses the
/// global heap too. An allocator must outlive every object made through it.
class Allocator {
public:
    virtual ~Allocator() = default;

    /// At least `size` bytes, aligned for any object; never null. Throws std::bad_alloc.
    virtual void* allocate(std::size_t size);
    /// Takes back what `allocate` of the same object gave; null is ignored.
    virtual void release(void* pointer) noexcept;
};

}  // namespace qlix::kzm
