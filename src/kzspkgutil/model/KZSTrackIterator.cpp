#include "kzspkgutil/model/KZSTrackIterator.h"

#include <utility>

namespace torvo::kzspkgutil {

KZSTrackIterator::KZSTrackIterator(std::vector<boost::shared_ptr<KZSTrack>> tracks)
    : tracks_(std::move(tracks)) {}

bool KZSTrackIterator::hasNext() const { return position_ < tracks_.size(); }

boost::shared_ptr<KZSTrack> KZSTrackIterator::next() { return tracks_[position_++]; }

}  // namespace torvo::kzspkgutil
