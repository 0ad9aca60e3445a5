#pragma once

#include <cstdint>
#include <vector>

#include <boost/smart_ptr/shared_ptr.hpp>

namespace torvo::kzspkgutil {

using Blob = std::vector<std::uint8_t>;

/// The fixed facts of a sample description. Formats and handlers are four-character codes with
/// the first letter in the high byte.
struct SampleDescInfo {
    virtual ~SampleDescInfo() = default;

    std::uint32_t format = 0;
    std::uint32_t extraDataSize = 0;
    std::uint32_t handler = 0;  ///< `vide`, `soun`, or the description's own type
};

struct VideoSampleDescInfo : SampleDescInfo {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    float horizontalResolution = 0;
    float verticalResolution = 0;
    std::uint16_t frameCount = 0;
    std::uint16_t depth = 0;
};

struct AudioSampleDescInfo : SampleDescInfo {
    float sampleRate = 0;
    std::uint32_t channelCount = 0;
    std::uint32_t sampleSize = 0;  ///< bits
};

/// One sample description of a track.
struct KZSSampleDescriptor {
    boost::shared_ptr<SampleDescInfo> info;
    Blob extraData;       ///< child boxes as stored (`avcC`, `esds`), headers included; FLV: empty
    Blob protectionData;  ///< only for descriptions of an already protected track
    std::uint32_t format = 0;
};

}  // namespace torvo::kzspkgutil
