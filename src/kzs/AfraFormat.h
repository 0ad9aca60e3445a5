#pragma once

#include <cstdint>

namespace torvo::kzs {

/// Bits of the `afra` box's byte 12.
constexpr std::uint8_t kAfraLongIds = 0x80;
constexpr std::uint8_t kAfraLongOffsets = 0x40;
constexpr std::uint8_t kAfraGlobalEntries = 0x20;

}  // namespace torvo::kzs
