#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "kzs/MetaTrackInfo.h"

namespace torvo::kzs {

/// What an onMetaData record tells a player of a rendition.
struct OnMetaDataRecord {
    double duration = 0.0;  ///< seconds
    std::vector<std::shared_ptr<MetaTrackInfo>> tracks;
    std::vector<std::pair<std::string, std::string>> customData;  ///< name and value
    bool hasAvc = false;
    double avcProfile = 0.0;
    double avcLevel = 0.0;
    bool hasAac = false;
    double aacObjectType = 0.0;
    bool hasSmpte = false;
    double smpteOffset = 0.0;
};

}  // namespace torvo::kzs
