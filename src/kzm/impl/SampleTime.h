#pragma once

#include "kzm/impl/EditList.h"
#include "kzm/impl/KZMTrack.h"
#include "kzm/impl/Rescale.h"

namespace qlix::kzm::impl {

/// Decode times from `start` up to, not including, `end`.
struct TimeRange {
    ScaledTime start;
    ScaledTime end;
};

/// A time in ticks of a track's media. A time that isn't in them yet goes by way of the movie's
/// ticks, as the times of a document are counted in those.
inline std::uint64_t mediaTicks(const KZMTrack& track, const ScaledTime& time) {
    const std::uint32_t media = track.record().timescale;
    if (time.timescale == media) return time.value;
    const std::uint64_t ticks = rescale(time.value, time.timescale, track.movieTimescale());
    return rescale(ticks, track.movieTimescale(), media);
}

}  // namespace qlix::kzm::impl
