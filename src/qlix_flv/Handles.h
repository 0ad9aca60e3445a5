#pragma once

#include <memory>
#include <new>
#include <type_traits>

#include "qlix_flv/Document.h"
#include "qlix_flv/Failure.h"
#include "qlix_flv/Memory.h"
#include "qlix_flv/ScriptValue.h"
#include "qlix_flv/TagSequence.h"
#include "qlix_flv/qlix_flv.h"

// The handles of the C interface. Each shares what it stands on, so any of them may be the last.

struct QlixFLVReader {
    std::shared_ptr<qlix::flv::Document> document;
};

struct QlixFLVTagIterator {
    std::shared_ptr<qlix::flv::Document> document;
    std::shared_ptr<qlix::flv::TagSequence> tags;
};

struct QlixFLVTag {
    std::shared_ptr<qlix::flv::Document> document;
    qlix::flv::TagHeader header;
};

struct QlixFLVScriptData {
    qlix::flv::ScriptValue value;
};

struct QlixFLVScriptDataIterator {
    qlix::flv::Memory memory;
    qlix::flv::ScriptMembers members;
};

struct QlixFLVScriptDataString {
    qlix::flv::ScriptText text;
};

namespace qlix::flv {

/// Runs the body of an operation and turns what it throws into a result.
template <class Work>
std::uint32_t guarded(const Work& work) noexcept {
    try {
        work();
        return kQlixFLVOk;
    } catch (const Failure& failure) {
        return failure.code;
    } catch (const std::bad_alloc&) {
        return kQlixFLVOutOfMemory;
    } catch (...) {
        return kQlixFLVInternal;
    }
}

/// Checks the handle, then the out argument, which is cleared; then runs `work` on the two.
template <class Handle, class Out, class Work>
std::uint32_t answer(Handle* handle, Out* out, const Work& work) noexcept {
    if (out != nullptr) *out = Out{};
    if (handle == nullptr) return kQlixFLVNullHandle;
    if (out == nullptr) return kQlixFLVNullPointer;
    return guarded([&] { work(*handle, *out); });
}

/// Ends a handle. The memory is taken from it first, since it goes with the handle.
template <class Handle>
std::uint32_t releaseHandle(Handle* handle, const Memory& memory) noexcept {
    return guarded([&] { destroyHandle(handle, memory); });
}

/// Copies at most `size` bytes of `length` by `copy(buffer, count)`.
template <class Copy>
std::uint32_t copyOut(std::uint32_t length, std::uint32_t size, std::uint8_t* buffer,
                      const Copy& copy) {
    const std::uint32_t count = size < length ? size : length;
    if (count > 0) copy(buffer, count);
    return count;
}

}  // namespace qlix::flv
