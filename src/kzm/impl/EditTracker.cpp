#include "kzm/impl/EditTracker.h"

#include "kzm/ErrorCode.h"
#include "kzm/impl/Rescale.h"
#include "kzm/impl/TrackState.h"

namespace qlix::kzm::impl {

void EditTracker::check(std::int64_t time, bool isMarker) const {
    // The time held at first is -1, so a negative one has to be refused by itself.
    if (time < 0 || track_.lastTime > time) raise(ErrorCode::timeWentBack);
    if (track_.sampleSeen && !isMarker && time - track_.lastTime > 0xFFFFFFFF) {
        raise(ErrorCode::gapTooLong);
    }
}

void EditTracker::noteFirst(std::int64_t time, bool isMarker) {
    if (track_.sampleSeen) return;
    track_.sampleSeen = true;
    if (isMarker || time <= track_.startTime) return;
    track_.lastTime = track_.startTime;
    if (!track_.inPause) pauseAt(track_.startTime);
}

std::int64_t EditTracker::addSample(std::int64_t time) {
    if (track_.inPause) {
        // On purpose: the duration of the last sample stays what it was before the gap.
        // Pinned by SegmentEditsTest.ASampleBehindAGapKeepsTheLastDuration.
        track_.inPause = false;
        const std::int64_t gap = time - track_.editStart;
        track_.trak->elst()->addEdit(toMovie(gap), kEmptyEdit);
        track_.editStart = time;
        track_.gapTotal += gap;
        track_.needsRow = true;
    } else {
        track_.lastDuration = track_.defaultDuration;
    }
    track_.lastTime = time;
    return time - track_.gapTotal;
}

void EditTracker::addMarker(std::int64_t time) {
    if (track_.inPause) return;
    track_.lastDuration = 0;
    track_.lastTime = time;
    pauseAt(time);
}

/// Ends the open edit at `time`, where the gap begins.
void EditTracker::pauseAt(std::int64_t time) {
    track_.inPause = true;
    putRow(time - track_.editStart);
    track_.needsRow = true;
    track_.editStart = time;
}

void EditTracker::settle() {
    if (track_.needsRow && track_.inPause) return;
    putRow(track_.end() - track_.editStart);
    track_.needsRow = false;
}

/// Gives the open edit its duration, and a row if it has none. On purpose a track that starts late
/// keeps the row without duration that its first, empty fragment gave it.
/// Pinned by SegmentEditsTest.ALateStartInALaterFragmentKeepsTheRowInFront.
void EditTracker::putRow(std::int64_t duration) {
    ElstBox& list = *track_.trak->elst();
    if (track_.needsRow) {
        list.addEdit(toMovie(duration), track_.editStart - track_.gapTotal);
    } else {
        list.setLastDuration(toMovie(duration));
    }
}

std::uint64_t EditTracker::toMovie(std::int64_t ticks) const {
    return static_cast<std::uint64_t>(rescaleSigned(ticks, track_.timescale, movieTimescale_));
}

}  // namespace qlix::kzm::impl
