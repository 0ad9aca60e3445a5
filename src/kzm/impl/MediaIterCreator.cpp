#include "kzm/impl/MediaIterCreator.h"

#include <utility>

#include "kzm/impl/FragmentedTrackIterator.h"
#include "kzm/impl/MixedTrackIterator.h"
#include "kzm/impl/TrackIterator.h"

namespace qlix::kzm::impl {

MediaIterCreator::MediaIterCreator(std::shared_ptr<const KZMTrack> track)
    : track_(std::move(track)) {}

std::unique_ptr<SampleIterator> MediaIterCreator::create(const TimeRange& range) const {
    if (!track_->isFragmented()) return std::make_unique<TrackIterator>(track_, range);
    if (track_->beginsInTables()) return std::make_unique<MixedTrackIterator>(track_, range);
    return std::make_unique<FragmentedTrackIterator>(track_, range);
}

Sample MediaIterCreator::marker(std::uint64_t mediaTicks) const {
    Sample sample;
    sample.time = mediaTicks;
    sample.timescale = track_->record().timescale;
    sample.handler = track_->record().handler;
    sample.flags = kSampleIsEmptyEdit;
    sample.track = Track(track_);
    return sample;
}

}  // namespace qlix::kzm::impl
