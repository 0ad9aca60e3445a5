#pragma once

#include <cstdint>
#include <memory>

#include "kzm/Sample.h"
#include "kzm/impl/SampleTime.h"

namespace qlix::kzm::impl {

/// Makes what a PresentationIter needs for each edit of one track.
class MediaIterCreator {
public:
    /// `end` is the document's.
    MediaIterCreator(std::shared_ptr<const KZMTrack> track, const ScaledTime& end);

    /// The samples from a decode time, in ticks of the media, up to the document's end: from the
    /// tables, or from the fragments if the movie is fragmented.
    std::unique_ptr<SampleIterator> create(const ScaledTime& start) const;
    /// A sample that stands for an empty edit.
    Sample marker(std::uint64_t mediaTicks) const;

    const KZMTrack& track() const { return *track_; }

private:
    std::shared_ptr<const KZMTrack> track_;
    ScaledTime end_;
};

}  // namespace qlix::kzm::impl
