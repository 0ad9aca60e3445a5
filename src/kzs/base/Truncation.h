#pragma once

#include <cstdint>

namespace torvo::kzs {

/// Whether `value`, truncated towards zero, is a signed 64-bit number above the smallest one. The
/// conversion of any other value, NaN included, is undefined.
constexpr bool fitsInt64(double value) {
    constexpr double kTwoTo63 = 9223372036854775808.0;
    return value > -kTwoTo63 && value < kTwoTo63;
}

/// `value` truncated towards zero; negative numbers wrap as unsigned ones do. 0 for what doesn't
/// fit.
constexpr std::uint64_t truncated(double value) {
    return fitsInt64(value) ? static_cast<std::uint64_t>(static_cast<std::int64_t>(value)) : 0;
}

}  // namespace torvo::kzs
