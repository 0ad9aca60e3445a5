#pragma once

#include <cstdint>
#include <optional>

#include "kzspkgutil/model/SampleDescriptions.h"

namespace torvo::kzspkgutil {

/// The boxes in the description of a hint track of tags.
///
///   offset  size  field
///        0     4  size 16
///        4     4  'amhp'
///        8     4  version 0, flags 0
///       12     1  entry count 1
///       13     1  entry: id 1
///       14     1  entry: flag bits 0
///       15     1  entry: value 4
///
/// With a time origin a second box follows:
///
///       16     4  size 12
///       20     4  'amto'
///       24     4  the origin, in ticks of the hint track
Blob makeHintDescriptionData(std::optional<std::uint32_t> timeOrigin);

}  // namespace torvo::kzspkgutil
