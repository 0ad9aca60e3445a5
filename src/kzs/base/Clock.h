#pragma once

#include <cstdint>
#include <optional>

namespace torvo::kzs {

/// The time for dates in files and for seeds: seconds since 1970-01-01 UTC.
///
/// When the environment has SOURCE_DATE_EPOCH (a whole number of seconds, the convention of
/// reproducible builds), that time stands still.
std::int64_t fileTimeSeconds();

/// The real time, for judging certificates: seconds since 1970-01-01 UTC.
std::int64_t realTimeSeconds();

/// For tests: both clocks stand at this time while it has a value.
void setClockForTests(std::optional<std::int64_t> seconds);

}  // namespace torvo::kzs
