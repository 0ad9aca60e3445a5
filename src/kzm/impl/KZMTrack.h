#pragma once

#include <cstddef>
#include <cstdint>

#include "kzm/Track.h"
#include "kzm/impl/KZMBase.h"

namespace qlix::kzm::impl {

class FragmentIndex;
class MoovBox;
class StblBox;
class StsdBox;
class TrakBox;

/// A track of an open document.
class KZMTrack : public KZMBase {
public:
    /// The boxes and the index belong to the document, which outlives the track. Throws
    /// noTimescale when a timescale is 0, noMovieHeader without a movie header.
    KZMTrack(const MoovBox& moov, const TrakBox& trak, FragmentIndex& fragments);

    const TrackRecord& record() const { return record_; }
    std::uint32_t movieTimescale() const { return movieTimescale_; }
    bool isFragmented() const { return isFragmented_; }
    /// Whether the movie is fragmented and the track has samples in front of all fragments.
    bool beginsInTables() const;
    const TrakBox& trak() const { return trak_; }
    FragmentIndex& fragments() const { return fragments_; }

    /// See Track.
    std::uint32_t sampleCount() const;
    std::size_t descriptionCount() const;
    const SampleDescriptor& description(std::size_t index) const;
    /// By the 1-based index that tables and fragments give; null outside of the list.
    const SampleDescriptor* descriptionAt(std::uint32_t index) const;

private:
    const StsdBox& descriptions() const;

    const TrakBox& trak_;
    FragmentIndex& fragments_;
    TrackRecord record_;
    std::uint32_t movieTimescale_ = 0;
    bool isFragmented_ = false;
};

}  // namespace qlix::kzm::impl
