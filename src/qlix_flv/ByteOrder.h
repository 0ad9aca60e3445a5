#pragma once

#include <cstdint>
#include <cstring>

namespace qlix::flv {

/// Big-endian loads; the caller knows that the bytes are there.
inline std::uint16_t loadU16(const std::uint8_t* p) {
    return static_cast<std::uint16_t>(p[0] << 8 | p[1]);
}

inline std::uint32_t loadU24(const std::uint8_t* p) {
    return std::uint32_t{p[0]} << 16 | std::uint32_t{p[1]} << 8 | p[2];
}

inline std::uint32_t loadU32(const std::uint8_t* p) {
    return std::uint32_t{p[0]} << 24 | loadU24(p + 1);
}

inline double loadDouble(const std::uint8_t* p) {
    const std::uint64_t bits = std::uint64_t{loadU32(p)} << 32 | loadU32(p + 4);
    double value = 0;
    static_assert(sizeof(value) == sizeof(bits), "IEEE 754 doubles");
    std::memcpy(&value, &bits, sizeof(value));
    return value;
}

}  // namespace qlix::flv
