#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string.h>  // explicit_bzero
#include <vector>

namespace hlx {

/// An allocator that wipes memory before it goes back, also when a vector grows.
template <typename T>
struct WipingAllocator {
    using value_type = T;

    WipingAllocator() = default;
    template <typename U>
    explicit WipingAllocator(const WipingAllocator<U>&) {}

    T* allocate(std::size_t count) { return std::allocator<T>().allocate(count); }
    void deallocate(T* memory, std::size_t count) {
        explicit_bzero(memory, count * sizeof(T));
        std::allocator<T>().deallocate(memory, count);
    }
    bool operator==(const WipingAllocator&) const { return true; }
    bool operator!=(const WipingAllocator&) const { return false; }
};

/// The bytes of a key file.
using SecretBytes = std::vector<std::uint8_t, WipingAllocator<std::uint8_t>>;

}  // namespace hlx
