#pragma once

#include <string>
#include <vector>

#include "kzs/FragmentEvent.h"
#include "kzs/base/FragmenterSample.h"

namespace torvo::kzs {

/// Samples from words such as "v0 p20 a40": kind and time in milliseconds. v is a key frame, p
/// another picture, a audio, A audio that claims to be a key frame, d and D the same for data.
std::vector<FragmenterSample> samplesFrom(const std::string& words);

/// "Complete 2 [100,200) 4/3 state 5": kind, number, start and end, current and previous cell.
std::string textOf(const FragmentEvent& event);

}  // namespace torvo::kzs
