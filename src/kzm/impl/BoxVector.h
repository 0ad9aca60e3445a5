#pragma once

#include <cstddef>
#include <limits>
#include <new>
#include <vector>

#include "kzm/impl/AllocateFrom.h"

namespace qlix::kzm::impl {

/// Lets standard containers draw on an Allocator; null means the global heap.
template <class T>
class HeapOf {
public:
    using value_type = T;

    HeapOf(Allocator* allocator = nullptr) noexcept : allocator_(allocator) {}
    template <class U>
    HeapOf(const HeapOf<U>& other) noexcept : allocator_(other.allocator()) {}

    T* allocate(std::size_t count) {
        if (count > std::numeric_limits<std::size_t>::max() / sizeof(T)) throw std::bad_alloc();
        return static_cast<T*>(allocateFrom(allocator_, count * sizeof(T)));
    }

    void deallocate(T* pointer, std::size_t /*count*/) noexcept { releaseTo(allocator_, pointer); }

    Allocator* allocator() const noexcept { return allocator_; }

private:
    Allocator* allocator_;  // outlives the container
};

template <class T, class U>
bool operator==(const HeapOf<T>& left, const HeapOf<U>& right) noexcept {
    return left.allocator() == right.allocator();
}

template <class T, class U>
bool operator!=(const HeapOf<T>& left, const HeapOf<U>& right) noexcept {
    return !(left == right);
}

/// A vector inside a box: `BoxVector<Row> rows{HeapOf<Row>(allocator)}`.
template <class T>
using BoxVector = std::vector<T, HeapOf<T>>;

}  // namespace qlix::kzm::impl
