#pragma once

#include <vector>

#include "kzspkgutil/model/IMediaProperties.h"

namespace torvo::offline {

/// What each segment file of a run is made from: the source's tracks as the segments need them.
class KZSMediaProperties final : public kzspkgutil::IMediaProperties {
public:
    KZSMediaProperties() = default;

    /// Takes the tracks and properties of `source` in the place of what is there.
    ///
    /// On purpose the copies have one description, of the size of the first one's extra data, no
    /// samples, and room for `kEmptyEdits` empty edits: a track that begins late needs its edit
    /// list in every segment. Descriptors are shared with the source.
    /// Pinned by KZSMediaPropertiesTest.TracksAreCopiedForASegmentOfTheirOwn.
    void fillFrom(const kzspkgutil::IMediaProperties& source);

    kzspkgutil::MediaProperties getProperties() const override { return properties_; }
    boost::shared_ptr<kzspkgutil::ITrackIterator> getTracks() const override;

    static constexpr std::uint32_t kEmptyEdits = 1000;

private:
    std::vector<boost::shared_ptr<kzspkgutil::KZSTrack>> tracks_;
    kzspkgutil::MediaProperties properties_;
};

}  // namespace torvo::offline
