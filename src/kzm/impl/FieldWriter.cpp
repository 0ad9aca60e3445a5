#include "kzm/impl/FieldWriter.h"

#include <algorithm>

#include "kzs/base/ByteOrder.h"

namespace qlix::kzm::impl {
namespace {

/// `value` times `scale`, held between 0 and `largest`; 0 for NaN.
double scaled(double value, double scale, double largest) {
    const double product = value * scale;
    if (!(product > 0.0)) return 0.0;
    return std::min(product, largest);
}

}  // namespace

std::uint8_t* FieldWriter::grow(std::size_t count) {
    const std::size_t before = bytes_.size();
    bytes_.resize(before + count);
    return bytes_.data() + before;
}

void FieldWriter::u16(std::uint16_t value) { torvo::kzs::storeU16(grow(2), value); }

void FieldWriter::u24(std::uint32_t value) { torvo::kzs::storeU24(grow(3), value); }

void FieldWriter::u32(std::uint32_t value) { torvo::kzs::storeU32(grow(4), value); }

void FieldWriter::u64(std::uint64_t value) { torvo::kzs::storeU64(grow(8), value); }

void FieldWriter::word(std::uint64_t value, bool wide) {
    if (wide) {
        u64(value);
    } else {
        u32(torvo::kzs::low32(value));
    }
}

void FieldWriter::zeros(std::size_t count) { grow(count); }

void FieldWriter::bytes(const std::uint8_t* first, std::size_t count) {
    bytes_.insert(bytes_.end(), first, first + count);
}

void FieldWriter::text(std::string_view characters) {
    bytes_.insert(bytes_.end(), characters.begin(), characters.end());
}

void FieldWriter::fixed16(double value) {
    u32(static_cast<std::uint32_t>(scaled(value, 65536.0, 4294967295.0)));
}

void FieldWriter::fixed8(double value) {
    u16(static_cast<std::uint16_t>(scaled(value, 256.0, 65535.0)));
}

double fromFixed16(std::uint32_t value) { return value * (1.0 / 65536.0); }

double fromFixed8(std::uint16_t value) { return value * (1.0 / 256.0); }

}  // namespace qlix::kzm::impl
