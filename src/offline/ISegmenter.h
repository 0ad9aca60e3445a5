#pragma once

#include <cstdint>

namespace torvo::offline {

/// Decides which segment what is written belongs to.
class ISegmenter {
public:
    virtual ~ISegmenter() = default;

    /// The number of the segment that is being written, from 1.
    virtual std::uint32_t currentSegment() const = 0;
    /// Tells that this much media time has just been written; may begin the next segment.
    virtual void advance(std::uint32_t milliseconds) = 0;
};

}  // namespace torvo::offline
