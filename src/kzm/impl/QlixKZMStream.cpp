#include "kzm/impl/QlixKZMStream.h"

#include <limits>

#include "kzm/QlixIStream.h"
#include "kzs/base/ByteOrder.h"

namespace qlix::kzm::impl {

void QlixKZMStream::open() {}

void QlixKZMStream::close() {}

std::uint64_t QlixKZMStream::read(void* /*buffer*/, std::uint64_t /*count*/) { return 0; }

void QlixKZMStream::write(const void* /*buffer*/, std::uint64_t /*count*/) {}

void QlixKZMStream::writeParts(const WritePart* parts, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) write(parts[i].data, parts[i].size);
}

void QlixKZMStream::seek(std::uint64_t /*position*/) {}

std::uint64_t QlixKZMStream::tell() const { return 0; }

void QlixKZMStream::truncate(std::uint64_t /*size*/) {}

void QlixKZMStream::flush() {}

std::uint64_t QlixKZMStream::measureSize() { return 0; }

void QlixKZMStream::readExact(void* buffer, std::uint64_t count) {
    if (read(buffer, count) < count) raise(ErrorCode::shortRead);
}

std::uint32_t QlixKZMStream::readU32() {
    std::uint8_t bytes[4];
    readExact(bytes, sizeof(bytes));
    return torvo::kzs::loadU32(bytes);
}

std::uint64_t QlixKZMStream::readU64() {
    std::uint8_t bytes[8];
    readExact(bytes, sizeof(bytes));
    return torvo::kzs::loadU64(bytes);
}

std::uint64_t QlixKZMStream::byteSize() {
    if (!size_) size_ = measureSize();
    return *size_;
}

std::uint64_t QlixKZMStream::sizeOf(QlixIStream& stream) {
    // A stream over a file answers all ones when it doesn't know.
    const auto position = [&stream] {
        const std::uint64_t told = stream.tell();
        if (told == std::numeric_limits<std::uint64_t>::max()) raise(ErrorCode::shortRead);
        return told;
    };
    const std::uint64_t before = position();
    stream.seek(0, kSeekFromEnd);
    const std::uint64_t size = position();
    stream.seek(static_cast<std::int64_t>(before), kSeekFromStart);
    return size;
}

std::uint64_t QlixKZMStream::left() {
    const std::uint64_t position = tell();
    const std::uint64_t size = byteSize();
    return position < size ? size - position : 0;
}

void QlixKZMStream::setWarningCallback(WarningCallback callback, void* context) {
    callback_ = callback;
    callbackContext_ = context;
}

void QlixKZMStream::warn(ErrorCode code) const {
    if (callback_ != nullptr && !callback_(callbackContext_, numberOf(code))) {
        raise(ErrorCode::warningRefused);
    }
}

}  // namespace qlix::kzm::impl
