#pragma once

#include <cstdint>

#include "kzm/WriterRecords.h"
#include "kzm/impl/TrackSettings.h"

namespace qlix::kzm::impl {

/// What the boxes of a new track are made from, so far as its caller says it: without its id, the
/// movie's timescale, hinted tracks and what depends on the kind of file.
TrackSettings settingsOf(const KZMTrackInfo& info, const KZMTrackParams& params);

/// Ticks of a track for one of the movie, at least 1: what a sample lasts until the next one is
/// known. The timescales are not 0.
std::uint32_t tickRatio(std::uint32_t trackTimescale, std::uint32_t movieTimescale);

}  // namespace qlix::kzm::impl
