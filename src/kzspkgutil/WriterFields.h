#pragma once

#include <cstdint>

#include "kzm/DateRecord.h"

namespace torvo::kzspkgutil {

/// The date that a file made now carries, UTC.
qlix::kzm::DateRecord currentDate();

/// The low 32 bits of a number that isn't negative, truncated. What no 64-bit number can hold
/// gives 0.
std::uint32_t truncatedLow32(double value);

}  // namespace torvo::kzspkgutil
