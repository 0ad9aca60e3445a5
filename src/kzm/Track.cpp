#include "kzm/Track.h"

#include <utility>

#include "kzm/impl/KZMTrack.h"

namespace qlix::kzm {

Track::Track(std::shared_ptr<const impl::KZMTrack> track) : track_(std::move(track)) {}

const TrackRecord& Track::info() const { return track_->record(); }

std::uint32_t Track::sampleCount() const { return track_->sampleCount(); }

std::size_t Track::descriptionCount() const { return track_->descriptionCount(); }

const SampleDescriptor& Track::description(std::size_t index) const {
    return track_->description(index);
}

}  // namespace qlix::kzm
