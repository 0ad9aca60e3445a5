#pragma once

#include <cstdint>

namespace qlix::kzm {

/// Origins of a seek.
constexpr int kSeekFromStart = 0;
constexpr int kSeekFromCurrent = 1;
constexpr int kSeekFromEnd = 2;

/// The bytes of an input, supplied by the caller. Reference counted: the library adds one
/// reference for as long as it uses the stream.
///
/// Failures are thrown as Exception and pass through the library unchanged.
class QlixIStream {
public:
    virtual ~QlixIStream() = default;

    virtual void addRef() = 0;
    virtual void release() = 0;

    virtual void open() = 0;
    virtual void close() = 0;
    /// Reads up to `count` bytes and returns how many; 0 means the end of the stream.
    virtual std::uint64_t read(void* buffer, std::uint64_t count) = 0;
    /// Moves the position and returns it. `origin` is one of the constants above.
    virtual std::uint64_t seek(std::int64_t offset, int origin) = 0;
    virtual std::uint64_t tell() = 0;
};

}  // namespace qlix::kzm
