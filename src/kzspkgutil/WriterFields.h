#pragma once

#include <cstdint>
#include <string>

#include "kzm/DateRecord.h"
#include "kzm/WriterRecords.h"

namespace torvo::kzspkgutil {

/// The date that a file made now carries, UTC.
qlix::kzm::DateRecord currentDate();

/// Copies the first three letters of `language`, or all where it has fewer.
void setLanguage(qlix::kzm::KZMTrackInfo& info, const std::string& language);

/// The low 32 bits of a number that isn't negative, truncated. What no 64-bit number can hold
/// gives 0.
std::uint32_t truncatedLow32(double value);

}  // namespace torvo::kzspkgutil
