#include "offline/KZSMediaProperties.h"

#include <boost/smart_ptr/make_shared.hpp>

#include "kzspkgutil/model/KZSTrackIterator.h"

namespace torvo::offline {

using kzspkgutil::KZSTrack;

void KZSMediaProperties::fillFrom(const kzspkgutil::IMediaProperties& source) {
    tracks_.clear();
    for (const auto tracks = source.getTracks(); tracks->hasNext();) {
        auto track = boost::make_shared<KZSTrack>(*tracks->next());
        const auto& descriptors = track->descriptors;
        track->descriptionCount = 1;
        track->emptyEditCount = kEmptyEdits;
        track->largestDescriptionSize =
            descriptors.empty() ? 0
                                : static_cast<std::uint32_t>(descriptors.front()->extraData.size());
        track->sampleCount = 0;
        tracks_.push_back(std::move(track));
    }
    properties_ = source.getProperties();
}

boost::shared_ptr<kzspkgutil::ITrackIterator> KZSMediaProperties::getTracks() const {
    return boost::make_shared<kzspkgutil::KZSTrackIterator>(tracks_);
}

}  // namespace torvo::offline
