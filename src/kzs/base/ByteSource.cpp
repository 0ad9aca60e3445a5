#include "kzs/base/ByteSource.h"

#include <algorithm>
#include <cstring>

#include "kzs/base/IStream.h"

namespace torvo::kzs {
namespace {

constexpr std::streamsize kBufferSize = 4096;
constexpr std::streamsize kPutBackSize = 4;

// min(max(position + offset, 0), size) where the sum can't wrap.
std::uint64_t moved(std::uint64_t position, std::int64_t offset, std::uint64_t size) {
    if (offset < 0) {
        const std::uint64_t back = 0 - static_cast<std::uint64_t>(offset);
        return back > position ? 0 : position - back;
    }
    const auto forward = static_cast<std::uint64_t>(offset);
    return forward > size - position ? size : position + forward;
}

}  // namespace

ByteSource::ByteSource(const std::vector<std::uint8_t>& block)
    : ByteSource(block.data(), block.size()) {}

ByteSource::ByteSource(const std::uint8_t* data, std::size_t size) : data_(data), size_(size) {}

std::ptrdiff_t ByteSource::read(char* buffer, std::ptrdiff_t count) {
    if (position_ >= size_) return -1;
    const std::uint64_t copied =
        std::min(static_cast<std::uint64_t>(std::max<std::ptrdiff_t>(count, 0)), size_ - position_);
    std::memcpy(buffer, data_ + position_, copied);
    position_ += copied;
    // On purpose: the count asked for, not the count copied; ByteSourceDevice tells the latter.
    // Pinned by ByteSourceTest.ReturnsTheRequestedCount.
    return count;
}

std::uint64_t ByteSource::seek(std::int64_t offset, int origin) {
    if (origin == kFromStart) {
        position_ = moved(0, offset, size_);
    } else if (origin == kFromEnd) {
        // On purpose: positive offsets go back from the end.
        // Pinned by ByteSourceTest.SeeksBackFromTheEndByPositiveOffsets.
        position_ =
            offset <= 0 ? size_ : size_ - std::min(size_, static_cast<std::uint64_t>(offset));
    } else {
        position_ = moved(position_, offset, size_);
    }
    return position_;
}

ByteSourceDevice::ByteSourceDevice(ByteSource source) : source_(source) {}

std::streamsize ByteSourceDevice::read(char* buffer, std::streamsize count) {
    const std::uint64_t before = source_.position();
    if (source_.read(buffer, count) < 0) return -1;
    return static_cast<std::streamsize>(source_.position() - before);
}

std::streampos ByteSourceDevice::seek(boost::iostreams::stream_offset offset,
                                      std::ios_base::seekdir direction) {
    std::uint64_t position = 0;
    if (direction == std::ios_base::end) {
        // A stream counts forward from the end, the source backward.
        position = source_.seek(offset > 0 ? 0 : -offset, kFromEnd);
    } else {
        position =
            source_.seek(offset, direction == std::ios_base::beg ? kFromStart : kFromCurrent);
    }
    return boost::iostreams::offset_to_position(static_cast<std::int64_t>(position));
}

ByteSourceStream::ByteSourceStream(const std::vector<std::uint8_t>& block)
    : ByteSourceStream(block.data(), block.size()) {}

ByteSourceStream::ByteSourceStream(const std::uint8_t* data, std::size_t size)
    : boost::iostreams::stream<ByteSourceDevice>(ByteSourceDevice(ByteSource(data, size)),
                                                 kBufferSize, kPutBackSize) {}

}  // namespace torvo::kzs
