#pragma once

#include <cstdint>

#include "kzs/base/Timestamp.h"

namespace torvo::kzs {

/// What a fragmenter is told of one sample.
struct FragmenterSample {
    static constexpr std::uint32_t kAudio = 0;
    static constexpr std::uint32_t kVideo = 1;
    static constexpr std::uint32_t kOther = 2;

    std::uint32_t trackKind = kAudio;
    Timestamp time;
    bool isKeyFrame = false;
    bool isSkipped = false;  ///< such a sample reaches neither a fragmenter nor the output
};

}  // namespace torvo::kzs
