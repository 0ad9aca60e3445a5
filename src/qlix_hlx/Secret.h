#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include <openssl/crypto.h>

namespace qlix::hlx {

/// An allocator that wipes memory before it goes back, also on the growth of a vector.
template <typename T>
struct WipingAllocator {
    using value_type = T;

    WipingAllocator() = default;
    template <typename U>
    explicit WipingAllocator(const WipingAllocator<U>&) {}

    T* allocate(std::size_t count) { return std::allocator<T>().allocate(count); }
    void deallocate(T* memory, std::size_t count) {
        OPENSSL_cleanse(memory, count * sizeof(T));
        std::allocator<T>().deallocate(memory, count);
    }
    bool operator==(const WipingAllocator&) const { return true; }
    bool operator!=(const WipingAllocator&) const { return false; }
};

/// Bytes that hold a key, or something that holds one.
using SecretBytes = std::vector<std::uint8_t, WipingAllocator<std::uint8_t>>;

/// A secret of fixed size, wiped when it goes.
template <std::size_t Size>
class SecretArray {
public:
    SecretArray() = default;
    SecretArray(const SecretArray&) = delete;
    SecretArray& operator=(const SecretArray&) = delete;
    ~SecretArray() { wipe(); }

    void wipe() { OPENSSL_cleanse(bytes_.data(), Size); }
    std::uint8_t* data() { return bytes_.data(); }
    const std::uint8_t* data() const { return bytes_.data(); }
    static constexpr std::size_t size() { return Size; }

private:
    std::array<std::uint8_t, Size> bytes_{};
};

}  // namespace qlix::hlx
