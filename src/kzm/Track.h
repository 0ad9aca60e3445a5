#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "kzm/DateRecord.h"

namespace qlix::kzm {

class SampleDescriptor;

namespace impl {
class KZMTrack;
}

/// What a document says about one track.
struct TrackRecord {
    std::uint32_t recordSize = 72;  ///< length of the record in its packed form
    std::uint32_t handler = 0;      ///< four-character code: vide, soun, hint, meta
    std::uint32_t flags = 0;        ///< of the track header
    std::uint32_t timescale = 0;    ///< ticks a second of the media, never 0
    DateRecord creationDate;        ///< of the media
    DateRecord modificationDate;
    std::uint64_t duration = 0;           ///< in ticks of the media
    char language[4] = {0, 0, 0, 0};      ///< three letters and a 0
    float width = 0.0F;                   ///< pixels
    float height = 0.0F;                  ///< pixels
    float volume = 0.0F;                  ///< 1 is full volume
    std::uint32_t optionBits = 0;         ///< bit 0: the samples have dependency bytes
    std::string handlerName;              ///< with the 0 that ends it
    std::uint32_t descriptionCount = 0;   ///< sample descriptions
    std::uint32_t largestDataLength = 0;  ///< bytes of the longest codec data
    std::uint32_t emptyEditCount = 0;     ///< pauses in the edit list
    std::uint32_t trackId = 0;
};

/// A track of a document: a cheap handle. What it gives out by reference lives as long as the
/// document. A default-constructed one is null: nothing may be asked of it.
class Track {
public:
    Track() = default;
    explicit Track(std::shared_ptr<const impl::KZMTrack> track);

    explicit operator bool() const { return track_ != nullptr; }

    const TrackRecord& info() const;
    /// Samples in the tables and in the fragments that were read so far.
    std::uint32_t sampleCount() const;
    /// Throws noDescriptionList for a track without a description list.
    std::size_t descriptionCount() const;
    /// `index` counts from 0; badArgument beyond the last. Throws noDescriptionList too.
    const SampleDescriptor& description(std::size_t index) const;

    const std::shared_ptr<const impl::KZMTrack>& handle() const { return track_; }

private:
    std::shared_ptr<const impl::KZMTrack> track_;
};

}  // namespace qlix::kzm
