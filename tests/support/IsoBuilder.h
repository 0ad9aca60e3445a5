#pragma once

#include <cstdint>
#include <string_view>

#include "support/Bytes.h"

namespace kz::test {

/// A box as bytes, with an honest size until a test lies:
/// `box("moof", fullBox("mfhd", 0, 0, u32(7)).claiming(9999))`.
class IsoBox : public Bytes {
public:
    explicit IsoBox(Bytes bytes) : Bytes(std::move(bytes)) {}

    /// The same bytes with another 32-bit size word; 0 claims "up to the end of the file".
    IsoBox claiming(std::uint32_t size) const;
};

IsoBox boxOf(std::string_view type, const Bytes& body);
IsoBox fullBoxOf(std::string_view type, std::uint8_t version, std::uint32_t flags,
                 const Bytes& body);
IsoBox largeBoxOf(std::string_view type, const Bytes& body);

/// A box of plain form from its parts, joined.
template <class... Parts>
IsoBox box(std::string_view type, const Parts&... parts) {
    return boxOf(type, (Bytes() + ... + parts));
}

/// A box with version and flags in front of its parts.
template <class... Parts>
IsoBox fullBox(std::string_view type, std::uint8_t version, std::uint32_t flags,
               const Parts&... parts) {
    return fullBoxOf(type, version, flags, (Bytes() + ... + parts));
}

/// A box with a 64-bit size.
template <class... Parts>
IsoBox largeBox(std::string_view type, const Parts&... parts) {
    return largeBoxOf(type, (Bytes() + ... + parts));
}

/// A `uuid` box; `extendedType` has 16 bytes.
template <class... Parts>
IsoBox uuidBox(const Bytes& extendedType, const Parts&... parts) {
    return boxOf("uuid", (extendedType + ... + parts));
}

}  // namespace kz::test
