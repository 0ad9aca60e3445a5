#pragma once

#include <cstdint>

namespace qlix::kzm::impl {

/// Brings a time of timescale `from` to timescale `to`: (to x value + (from - 1) / 2) / from in
/// integers, so an exact half goes down; unchanged when the two are equal.
///
/// Values that don't fit are held at the limit of the type. Throws noTimescale when `from` is 0
/// and `to` is not.
std::uint64_t rescale(std::uint64_t value, std::uint32_t from, std::uint32_t to);
/// The same in signed arithmetic: the division truncates towards 0.
std::int64_t rescaleSigned(std::int64_t value, std::uint32_t from, std::uint32_t to);

}  // namespace qlix::kzm::impl
