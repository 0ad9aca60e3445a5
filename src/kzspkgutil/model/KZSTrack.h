#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <boost/smart_ptr/shared_ptr.hpp>

#include "kzspkgutil/model/SampleDescriptions.h"

namespace torvo::kzspkgutil {

/// A track that a source exposes.
struct KZSTrack {
    std::uint32_t handler = 0;   ///< `vide`, `soun` or `meta`
    std::string language;        ///< three letters
    std::uint32_t trackId = 0;   ///< 0 for FLV input
    std::uint64_t duration = 0;  ///< in `timescale`
    float width = 0;             ///< pixels; 0 for audio and data
    float height = 0;
    float volume = 0;
    std::uint32_t timescale = 0;  ///< ticks a second
    std::uint32_t trackFlags = 0;
    std::uint32_t descriptionCount = 0;
    std::uint32_t emptyEditCount = 0;
    std::uint32_t largestDescriptionSize = 0;  ///< bytes
    std::vector<boost::shared_ptr<KZSSampleDescriptor>> descriptors;
    std::uint32_t sampleCount = 0;  ///< 0 for FLV input
};

}  // namespace torvo::kzspkgutil
