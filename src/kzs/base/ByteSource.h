#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include <boost/iostreams/categories.hpp>
#include <boost/iostreams/positioning.hpp>
#include <boost/iostreams/stream.hpp>

namespace torvo::kzs {

/// A read-only seekable device over a memory block that it doesn't own.
class ByteSource {
public:
    /// `block` outlives the source.
    explicit ByteSource(const std::vector<std::uint8_t>& block);
    ByteSource(const std::uint8_t* data, std::size_t size);

    /// -1 at the end; else copies min(count, bytes left), moves on, and returns `count`.
    std::ptrdiff_t read(char* buffer, std::ptrdiff_t count);
    /// Moves within the block; a seek outside ends at its edge. From the end, `offset` counts
    /// backwards. `origin` as for IStream. Returns the new position.
    std::uint64_t seek(std::int64_t offset, int origin);

    std::uint64_t position() const { return position_; }

private:
    const std::uint8_t* data_;
    std::uint64_t size_;
    std::uint64_t position_ = 0;
};

/// The device that Boost gets: a ByteSource that answers how much it really copied, since the
/// buffer above takes the answer for bytes.
class ByteSourceDevice {
public:
    using char_type = char;
    struct category : boost::iostreams::input_seekable, boost::iostreams::device_tag {};

    explicit ByteSourceDevice(ByteSource source);

    std::streamsize read(char* buffer, std::streamsize count);
    std::streampos seek(boost::iostreams::stream_offset offset, std::ios_base::seekdir direction);

private:
    ByteSource source_;
};

/// An input stream over a memory block: the same code reads it that reads a file.
class ByteSourceStream : public boost::iostreams::stream<ByteSourceDevice> {
public:
    /// `block` outlives the stream.
    explicit ByteSourceStream(const std::vector<std::uint8_t>& block);
    ByteSourceStream(const std::uint8_t* data, std::size_t size);
};

}  // namespace torvo::kzs
