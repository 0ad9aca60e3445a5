#pragma once

#include <cstdint>
#include <vector>

#include "kzm/impl/MoofBox.h"
#include "kzm/impl/TrafBox.h"

namespace qlix::kzm::impl {

struct TrackState;

/// The fragment that is being filled: a `moof`, and a `traf` for each track, which joins it only if
/// the track has samples.
class OpenFragment {
public:
    /// `baseOffset` is what the offsets of all samples count from.
    OpenFragment(const BoxContext& context, std::uint32_t sequenceNumber, std::uint64_t baseOffset,
                 const std::vector<TrackState>& tracks);

    /// Adds a sample to the track's `traf`. Throws writeFailed when it lies too far behind the
    /// base.
    TrafBox::Added add(const TrackState& track, const FragmentSample& sample);
    /// For the samples to come of a track that has none yet.
    void setDescriptionIndex(const TrackState& track);

    /// Gives the last row of each track its duration: up to the end of the track.
    void settleLastRows(const std::vector<TrackState>& tracks);
    /// Moves the filled ones into the `moof` and puts that at `position`. To be called once.
    void place(std::vector<TrackState>& tracks, std::uint64_t position);
    /// Bytes of the `moof` once it is placed.
    std::uint64_t size() const { return moof_->size(); }
    /// Adds `distance` to what the offsets count from.
    void moveBase(std::uint64_t distance);
    void write() { moof_->write(); }
    /// Notes where the duration of each track's last row stands in the file.
    void noteLastRows(std::vector<TrackState>& tracks) const;

private:
    TrafBox& trafOf(const TrackState& track) const;

    BoxPtrOf<MoofBox> moof_;
    std::vector<BoxPtrOf<TrafBox>> waiting_;  // by track, until they join the `moof`
    std::vector<TrafBox*> trafs_;             // by track; null once destroyed
};

}  // namespace qlix::kzm::impl
