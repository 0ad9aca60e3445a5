#pragma once

#include <cstdint>

namespace torvo::kzs {

/// A point in time: `value` ticks at `timescale` ticks a second.
///
/// Two timestamps are compared and subtracted by bringing the right one into the left one's
/// timescale, truncating.
struct Timestamp {
    std::uint64_t value = 0;
    std::uint32_t timescale = 1000;
    std::uint8_t flags[2] = {0, 0};  ///< always 0; copied along and never looked at
};

/// A time in milliseconds.
constexpr Timestamp milliseconds(std::uint64_t value) { return Timestamp{value, 1000, {0, 0}}; }

/// `value` at timescale `from`, in ticks of `to`: (to * value) / from in signed 64-bit
/// arithmetic, truncating; unchanged when the two are equal or `from` is 0.
std::uint64_t rescaleTruncating(std::uint64_t value, std::uint32_t from, std::uint32_t to);

bool operator==(const Timestamp& left, const Timestamp& right);
bool operator!=(const Timestamp& left, const Timestamp& right);
bool operator>=(const Timestamp& left, const Timestamp& right);
bool operator<(const Timestamp& left, const Timestamp& right);

/// The difference in the timescale of `left`; wraps below 0 as unsigned numbers do.
Timestamp operator-(const Timestamp& left, const Timestamp& right);

}  // namespace torvo::kzs
