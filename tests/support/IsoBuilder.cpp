#include "support/IsoBuilder.h"

#include <stdexcept>

namespace kz::test {
namespace {

Bytes code(std::string_view type) {
    if (type.size() != 4) throw std::logic_error("a box type has four letters");
    return text(type);
}

}  // namespace

IsoBox IsoBox::claiming(std::uint32_t size) const { return IsoBox(patched(0, u32(size))); }

IsoBox boxOf(std::string_view type, const Bytes& body) {
    return IsoBox(u32(8 + body.size()) + code(type) + body);
}

IsoBox fullBoxOf(std::string_view type, std::uint8_t version, std::uint32_t flags,
                 const Bytes& body) {
    return boxOf(type, u8(version) + u24(flags) + body);
}

IsoBox largeBoxOf(std::string_view type, const Bytes& body) {
    return IsoBox(u32(1) + code(type) + u64(16 + body.size()) + body);
}

}  // namespace kz::test
