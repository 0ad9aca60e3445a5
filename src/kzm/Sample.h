#pragma once

#include <cstdint>

#include "kzm/SampleDescriptor.h"
#include "kzm/Track.h"

namespace qlix::kzm {

/// Values of the low byte of Sample::flags; 0 for samples that are neither.
constexpr std::uint32_t kSampleIsSync = 1;
constexpr std::uint32_t kSampleIsEmptyEdit = 2;  ///< a pause of the track: no bytes, no description

/// One sample, as a plain record. It may outlive its iterator, not its document.
struct Sample {
    std::uint32_t recordSize = 32;        ///< length of the record in its packed form
    std::uint32_t size = 0;               ///< bytes
    std::uint64_t time = 0;               ///< ticks: decode time, or presentation time after edits
    std::uint32_t timescale = 0;          ///< ticks a second
    std::uint32_t compositionOffset = 0;  ///< ticks, the 32 bits of the file: may mean a signed one
    std::uint32_t handler = 0;            ///< that of the track
    std::uint32_t flags = 0;              ///< low byte: see above; bits 8-15: dependency byte
    std::uint64_t fileOffset = 0;         ///< position of the first byte
    std::uint32_t sequenceNumber = 0;     ///< of the fragment; 0 for a sample from tables
    const SampleDescriptor* description = nullptr;  ///< the document's; null in a marker
    Track track;

    /// The low byte of the flags: 1 sync, 2 empty-edit marker, 0 any other.
    std::uint32_t frameType() const { return flags & 0xFF; }
};

/// Gives samples one at a time.
class SampleIterator {
public:
    virtual ~SampleIterator() = default;

    /// Reads on in the file where that is needed to tell.
    virtual bool hasSample() = 0;
    /// The current sample; moves on. Throws badArgument when there is none.
    virtual Sample next() = 0;
};

}  // namespace qlix::kzm
