#include "kzm/impl/FieldReader.h"

#include <algorithm>

#include "kzm/ErrorCode.h"
#include "kzm/impl/QlixKZMStream.h"
#include "kzs/base/ByteOrder.h"

namespace qlix::kzm::impl {

std::uint64_t FieldReader::left() const {
    const std::uint64_t position = stream_.tell();
    return position < end_ ? end_ - position : 0;
}

void FieldReader::need(std::uint64_t count) const {
    if (count > left()) raise(ErrorCode::boxTooShort);
}

std::uint8_t FieldReader::u8() {
    need(1);
    std::uint8_t byte = 0;
    stream_.readExact(&byte, 1);
    return byte;
}

std::uint16_t FieldReader::u16() {
    need(2);
    std::uint8_t bytes[2];
    stream_.readExact(bytes, sizeof(bytes));
    return torvo::kzs::loadU16(bytes);
}

std::uint32_t FieldReader::u24() {
    need(3);
    std::uint8_t bytes[3];
    stream_.readExact(bytes, sizeof(bytes));
    return torvo::kzs::loadU24(bytes);
}

std::uint32_t FieldReader::u32() {
    need(4);
    return stream_.readU32();
}

std::uint64_t FieldReader::u64() {
    need(8);
    return stream_.readU64();
}

void FieldReader::skip(std::uint64_t count) {
    need(count);
    stream_.seek(stream_.tell() + count);
}

std::vector<std::uint8_t> FieldReader::bytes(std::uint64_t count) {
    need(count);
    // An `mdat` may claim more than the file has; memory is taken only for what is there.
    std::vector<std::uint8_t> out(static_cast<std::size_t>(std::min(count, stream_.left())));
    out.resize(static_cast<std::size_t>(stream_.read(out.data(), out.size())));
    return out;
}

}  // namespace qlix::kzm::impl
