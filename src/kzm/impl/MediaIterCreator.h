#pragma once

#include <cstdint>
#include <memory>

#include "kzm/Sample.h"
#include "kzm/impl/SampleTime.h"

namespace qlix::kzm::impl {

/// Makes what is needed to walk one track, whole or edit by edit.
class MediaIterCreator {
public:
    explicit MediaIterCreator(std::shared_ptr<const KZMTrack> track);

    /// The samples of a range of decode times: from the tables, or from the fragments if the movie
    /// is fragmented, or from both.
    std::unique_ptr<SampleIterator> create(const TimeRange& range) const;
    /// A sample that stands for an empty edit.
    Sample marker(std::uint64_t mediaTicks) const;

    const KZMTrack& track() const { return *track_; }

private:
    std::shared_ptr<const KZMTrack> track_;
};

}  // namespace qlix::kzm::impl
