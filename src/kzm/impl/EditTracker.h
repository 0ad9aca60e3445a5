#pragma once

#include <cstdint>

namespace qlix::kzm::impl {

struct TrackState;

/// Keeps the edit list of a track in step with its samples: gaps become empty edits, and the
/// track's own time runs on without them.
///
/// Times are ticks of the track, rows of the list are in ticks of the movie.
class EditTracker {
public:
    /// `track` outlives the tracker.
    EditTracker(TrackState& track, std::uint32_t movieTimescale)
        : track_(track), movieTimescale_(movieTimescale) {}

    /// Throws timeWentBack, gapTooLong.
    void check(std::int64_t time, bool isMarker) const;
    /// Notes the first sample of the track: one that comes late stands behind a gap.
    void noteFirst(std::int64_t time, bool isMarker);
    /// Takes a sample and returns its time without the gaps. Throws editListFull.
    std::int64_t addSample(std::int64_t time);
    /// Takes an end-of-edit marker: the track pauses. Throws editListFull.
    void addMarker(std::int64_t time);
    /// Brings the row of the open edit up to the end of the last sample. Throws editListFull.
    void settle();

private:
    void pauseAt(std::int64_t time);
    void putRow(std::int64_t duration);
    std::uint64_t toMovie(std::int64_t ticks) const;

    TrackState& track_;
    std::uint32_t movieTimescale_;
};

}  // namespace qlix::kzm::impl
