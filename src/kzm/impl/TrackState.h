#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "kzm/impl/TfraBox.h"
#include "kzm/impl/TrakBox.h"

namespace qlix::kzm::impl {

/// What a writer keeps about a track. Times are ticks of the track.
struct TrackState {
    TrakBox* trak = nullptr;  ///< in the writer's `moov`
    std::uint32_t id = 0;     ///< from 1
    std::uint32_t handler = 0;
    std::uint32_t timescale = 0;

    std::uint32_t descriptionIndex = 0;  ///< of the samples to come
    bool hasDescription = false;

    bool sampleSeen = false;
    std::int64_t startTime = 0;  ///< media time at which the track begins; nothing sets it
    std::int64_t gapTotal = 0;   ///< sum of the spans that pauses took out
    bool inPause = false;
    std::int64_t editStart = 0;  ///< time at which the open edit began
    bool needsRow = true;        ///< the open edit has no row in the edit list yet
    /// Of the last sample, gaps still counted. On purpose it begins so that a track without samples
    /// has the duration 0. Pinned by SegmentEditsTest.AnUnusedTrackHasARowOfNoDuration.
    std::int64_t lastTime = -1;
    std::int64_t lastDuration = 1;
    std::int64_t defaultDuration = 1;  ///< given to a sample until the next one is known

    bool hasSamples = false;            ///< in the open fragment
    std::uint64_t lastEntryOffset = 0;  ///< position of the last written row's duration; 0: none
    std::uint64_t lastEntryTime = 0;    ///< that row's decode time
    std::size_t randomAccessDone = 0;   ///< entries that know the place of their `moof`
    std::uint32_t trunNumber = 0;
    std::uint32_t sampleNumber = 0;
    std::vector<TfraBox::Entry> randomAccess;

    /// Where the last sample ends, gaps still counted.
    std::int64_t end() const { return lastTime + lastDuration; }
    /// The same on the track's own time line.
    std::int64_t mediaEnd() const { return end() - gapTotal; }
};

}  // namespace qlix::kzm::impl
