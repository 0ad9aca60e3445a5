#pragma once

#include <cstddef>
#include <limits>
#include <memory>
#include <new>
#include <utility>
#include <vector>

#include "qlix_flv/qlix_flv.h"

namespace qlix::flv {

/// The standard allocator contract over the allocator callbacks: all memory of the library comes
/// from here. Throws std::bad_alloc when the callback answers null.
template <class T>
class MemoryAllocator {
public:
    using value_type = T;

    explicit MemoryAllocator(const QlixFLVAllocatorCallBacks& callBacks) : callBacks_(callBacks) {}
    template <class Other>
    MemoryAllocator(const MemoryAllocator<Other>& other) : callBacks_(other.callBacks()) {}

    T* allocate(std::size_t count) {
        if (count > std::numeric_limits<std::size_t>::max() / sizeof(T)) throw std::bad_alloc();
        void* memory = callBacks_.allocate(callBacks_.context, count * sizeof(T));
        if (memory == nullptr) throw std::bad_alloc();
        return static_cast<T*>(memory);
    }
    void deallocate(T* memory, std::size_t) { callBacks_.free(callBacks_.context, memory); }

    const QlixFLVAllocatorCallBacks& callBacks() const { return callBacks_; }

private:
    QlixFLVAllocatorCallBacks callBacks_;
};

template <class Left, class Right>
bool operator==(const MemoryAllocator<Left>& left, const MemoryAllocator<Right>& right) {
    return left.callBacks().context == right.callBacks().context &&
           left.callBacks().allocate == right.callBacks().allocate;
}

template <class Left, class Right>
bool operator!=(const MemoryAllocator<Left>& left, const MemoryAllocator<Right>& right) {
    return !(left == right);
}

using Memory = MemoryAllocator<std::uint8_t>;
using MemoryBytes = std::vector<std::uint8_t, Memory>;

/// A shared object whose memory comes from the callbacks.
template <class T, class... Arguments>
std::shared_ptr<T> makeShared(const Memory& memory, Arguments&&... arguments) {
    return std::allocate_shared<T>(MemoryAllocator<T>(memory),
                                   std::forward<Arguments>(arguments)...);
}

/// A handle: an object made here and given out as a raw pointer, until `destroyHandle`.
template <class T>
T* createHandle(const Memory& memory, T content) {
    MemoryAllocator<T> allocator(memory);
    T* place = allocator.allocate(1);
    return new (place) T(std::move(content));
}

template <class T>
void destroyHandle(T* handle, const Memory& memory) {
    MemoryAllocator<T> allocator(memory);
    handle->~T();
    allocator.deallocate(handle, 1);
}

}  // namespace qlix::flv
