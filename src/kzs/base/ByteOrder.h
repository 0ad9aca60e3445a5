#pragma once

#include <cstdint>

#include <boost/endian/conversion.hpp>

namespace torvo::kzs {

/// Big-endian integers in memory: the program loads and stores them here, and in the two C
/// libraries by functions of their own.
///
/// `p` points to at least as many bytes as the name says; no alignment is needed. Of stores one
/// behind the other compilers make single bytes when they are told as shifts, so those are told as
/// a swap.

constexpr std::uint16_t loadU16(const std::uint8_t* p) {
    return static_cast<std::uint16_t>((p[0] << 8) | p[1]);
}

constexpr std::uint32_t loadU24(const std::uint8_t* p) {
    return (std::uint32_t{p[0]} << 16) | (std::uint32_t{p[1]} << 8) | p[2];
}

constexpr std::uint32_t loadU32(const std::uint8_t* p) {
    return (std::uint32_t{p[0]} << 24) | loadU24(p + 1);
}

constexpr std::uint64_t loadU64(const std::uint8_t* p) {
    return (std::uint64_t{loadU32(p)} << 32) | loadU32(p + 4);
}

inline void storeU16(std::uint8_t* p, std::uint16_t value) {
    boost::endian::store_big_u16(p, value);
}

/// Writes the low 24 bits.
constexpr void storeU24(std::uint8_t* p, std::uint32_t value) {
    p[0] = static_cast<std::uint8_t>(value >> 16);
    p[1] = static_cast<std::uint8_t>(value >> 8);
    p[2] = static_cast<std::uint8_t>(value);
}

inline void storeU32(std::uint8_t* p, std::uint32_t value) {
    boost::endian::store_big_u32(p, value);
}

inline void storeU64(std::uint8_t* p, std::uint64_t value) {
    boost::endian::store_big_u64(p, value);
}

/// The low 32 bits, for where a wider value is meant to be cut.
constexpr std::uint32_t low32(std::uint64_t value) { return static_cast<std::uint32_t>(value); }

/// A four-character code: the first letter in the high byte, so that its big-endian bytes spell
/// it. `code` has exactly four letters.
constexpr std::uint32_t fourCc(const char (&code)[5]) {
    return (std::uint32_t{static_cast<std::uint8_t>(code[0])} << 24) |
           (std::uint32_t{static_cast<std::uint8_t>(code[1])} << 16) |
           (std::uint32_t{static_cast<std::uint8_t>(code[2])} << 8) |
           std::uint32_t{static_cast<std::uint8_t>(code[3])};
}

}  // namespace torvo::kzs
