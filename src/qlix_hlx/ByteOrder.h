#pragma once

#include <cstdint>

namespace qlix::hlx {

/// Big-endian integers in memory. `p` points to at least as many bytes as the name says.

constexpr std::uint32_t loadU32(const std::uint8_t* p) {
    return (std::uint32_t{p[0]} << 24) | (std::uint32_t{p[1]} << 16) | (std::uint32_t{p[2]} << 8) |
           p[3];
}

constexpr void storeU32(std::uint8_t* p, std::uint32_t value) {
    for (int shift = 24; shift >= 0; shift -= 8) *p++ = static_cast<std::uint8_t>(value >> shift);
}

constexpr void storeU64(std::uint8_t* p, std::uint64_t value) {
    storeU32(p, static_cast<std::uint32_t>(value >> 32));
    storeU32(p + 4, static_cast<std::uint32_t>(value));
}

}  // namespace qlix::hlx
