#pragma once

#include <cstdint>

#include "flv/Reader.h"

namespace torvo::kzspkgutil {

/// What is found out about an FLV file before any track is made.
struct FLVSurvey {
    double width = 0;  ///< pixels; 0 where the file doesn't tell
    double height = 0;
    std::uint32_t durationMs = 0;
    bool hasAudio = false;
    bool hasVideo = false;
};

/// Looks at the first tags and at the last one.
///
/// The size of the picture comes from the first onMetaData among the first 10 tags, up to and with
/// none later than time 0. The duration is the time of the file's last tag. Throws flv::Exception;
/// a file without tags fails, with another code than that of damage.
FLVSurvey surveyFLV(const flv::Reader& reader);

}  // namespace torvo::kzspkgutil
