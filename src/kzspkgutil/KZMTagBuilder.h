#pragma once

#include <cstdint>

#include "kzspkgutil/model/MemoryArena.h"
#include "kzspkgutil/model/TCMessage.h"

namespace torvo::kzspkgutil {

/// What a tag header tells of a sample description.
struct KZMDescriptionFacts {
    std::uint32_t format = 0;
    std::uint32_t width = 0;  ///< pixels
    std::uint32_t height = 0;
    float sampleRate = 0;
    std::uint32_t sampleSize = 0;  ///< the field as stored
    std::uint32_t channelCount = 0;
};

/// What a tag header tells of a sample.
struct KZMSampleFacts {
    std::uint32_t handler = 0;  ///< `vide`, `soun` or `meta`
    KZMDescriptionFacts description;
    bool isKeyFrame = false;
    std::uint64_t decodeTicks = 0;
    std::uint32_t timescale = 1000;
    std::uint32_t compositionTicks = 0;  ///< two's complement: it may be negative
    std::uint32_t sizeBytes = 0;
};

/// (ticks * 1000) / timescale in double precision, truncated; never beyond the largest signed
/// 64-bit number. A timescale of 0 gives 0.
Timestamp sampleTimeOf(std::uint64_t ticks, std::uint32_t timescale);

/// Makes the message of a sample, complete but for the sample's own bytes: those are to be read
/// to getSampleDataOffset() of the block.
///
/// A format without a tag form, or one that doesn't go with the handler, gives a message without
/// body whose tag type is 0, so that nothing downstream takes it up. Throws KZSPkgUtilException,
/// kTagTooLarge, when the sample is too large for a tag.
TCMessage makeTagFrame(IMemoryArena& arena, const KZMSampleFacts& sample);

}  // namespace torvo::kzspkgutil
