#pragma once

#include <cstddef>
#include <new>

#include "kzm/Allocator.h"

namespace qlix::kzm::impl {

/// Memory of `allocator`, or of the global heap where that is null. Throws std::bad_alloc.
inline void* allocateFrom(Allocator* allocator, std::size_t size) {
    return allocator != nullptr ? allocator->allocate(size) : ::operator new(size);
}

/// Gives memory back that `allocateFrom` gave by the same allocator.
inline void releaseTo(Allocator* allocator, void* memory) noexcept {
    if (allocator != nullptr) {
        allocator->release(memory);
    } else {
        ::operator delete(memory);
    }
}

}  // namespace qlix::kzm::impl
