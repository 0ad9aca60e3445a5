#pragma once

#include <memory>
#include <new>
#include <utility>

#include "kzm/impl/AllocateFrom.h"

namespace qlix::kzm::impl {

class Box;
class QlixKZMStream;

/// What every box is made with. Both outlive the box; either may be null: without an allocator
/// the global heap is used, without a stream a box can be built and sized, not read or written.
struct BoxContext {
    QlixKZMStream* stream = nullptr;
    Allocator* allocator = nullptr;
};

/// Destroys a box and gives its memory back to where it came from.
class BoxDeleter {
public:
    BoxDeleter() = default;
    explicit BoxDeleter(Allocator* allocator) : allocator_(allocator) {}

    void operator()(Box* box) const noexcept;

private:
    Allocator* allocator_ = nullptr;
};

template <class T>
using BoxPtrOf = std::unique_ptr<T, BoxDeleter>;
using BoxPtr = BoxPtrOf<Box>;

/// Makes a box through the allocator of `context`: `makeBox<MfhdBox>(context, 7u)` calls
/// `MfhdBox(context, 7u)`. What the constructor throws passes on, the memory is given back.
template <class T, class... Arguments>
BoxPtrOf<T> makeBox(const BoxContext& context, Arguments&&... arguments) {
    void* memory = allocateFrom(context.allocator, sizeof(T));
    try {
        return BoxPtrOf<T>(new (memory) T(context, std::forward<Arguments>(arguments)...),
                           BoxDeleter(context.allocator));
    } catch (...) {
        releaseTo(context.allocator, memory);
        throw;
    }
}

}  // namespace qlix::kzm::impl
