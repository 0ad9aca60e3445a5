#include "kzs/base/Timestamp.h"

namespace torvo::kzs {

std::uint64_t rescaleTruncating(std::uint64_t value, std::uint32_t from, std::uint32_t to) {
    if (from == to || from == 0) return value;
    // The product wraps as unsigned numbers do, so that no input is undefined.
    const auto product = static_cast<std::int64_t>(std::uint64_t{to} * value);
    return static_cast<std::uint64_t>(product / std::int64_t{from});
}

namespace {

std::uint64_t inTimescaleOf(const Timestamp& left, const Timestamp& right) {
    return rescaleTruncating(right.value, right.timescale, left.timescale);
}

}  // namespace

bool operator==(const Timestamp& left, const Timestamp& right) {
    return left.value == inTimescaleOf(left, right);
}

bool operator!=(const Timestamp& left, const Timestamp& right) { return !(left == right); }

bool operator>=(const Timestamp& left, const Timestamp& right) {
    return left.value >= inTimescaleOf(left, right);
}

bool operator<(const Timestamp& left, const Timestamp& right) { return !(left >= right); }

Timestamp operator-(const Timestamp& left, const Timestamp& right) {
    return Timestamp{left.value - inTimescaleOf(left, right), left.timescale, {0, 0}};
}

}  // namespace torvo::kzs
