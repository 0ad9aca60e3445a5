#pragma once

#include <cstdint>

namespace torvo::kzs {

/// Where a seek counts from. Any other number counts as kFromCurrent.
constexpr int kFromStart = 0;
constexpr int kFromCurrent = 1;
constexpr int kFromEnd = 2;

/// The read side of a byte stream with a 64-bit position.
class IStream {
public:
    virtual ~IStream() = default;

    /// Throws IOStreamException.
    virtual void open() = 0;
    /// Never fails; on a closed stream it does nothing.
    virtual void close() = 0;
    /// Returns the bytes read, fewer than `count` at the end of the stream or as the system
    /// pleases. A null buffer or a count of 0 gives 0. Throws IOStreamException.
    virtual std::uint64_t read(void* buffer, std::uint64_t count) = 0;
    /// Returns the new position. Throws IOStreamException.
    virtual std::uint64_t seek(std::int64_t offset, int origin) = 0;
    /// Returns what the system gives, also when that is an error's all ones.
    virtual std::uint64_t tell() = 0;
};

}  // namespace torvo::kzs
