#pragma once

#include <cstdint>
#include <memory>

#include "kzm/impl/FragmentedTrackIterator.h"
#include "kzm/impl/TrackIterator.h"

namespace qlix::kzm::impl {

/// Walks a track whose first samples are in tables and all others in fragments, as recorders leave
/// it that write a short movie first and then go on.
///
/// The decode times of the fragments go on where those of the tables end.
class MixedTrackIterator final : public SampleIterator {
public:
    /// The track begins in tables. The document outlives the iterator. Throws noSampleTables.
    MixedTrackIterator(const std::shared_ptr<const KZMTrack>& track, const TimeRange& range);

    bool hasSample() override;
    Sample next() override;

private:
    std::uint64_t endOfTables_;  // ticks of the media
    TrackIterator tables_;
    FragmentedTrackIterator fragments_;
};

}  // namespace qlix::kzm::impl
