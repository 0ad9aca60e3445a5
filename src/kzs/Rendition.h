#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "kvl/minidom/Node.h"
#include "kzs/BootstrapBuilder.h"

namespace torvo::kzs {

/// One stream of a presentation, as a `media` element describes it. It lives in its Manifest.
struct Rendition {
    std::string url;                        ///< of the media; left out of the file when empty
    std::vector<std::uint8_t> drmMetadata;  ///< the protection header
    std::string drmUrl;                     ///< where that lies, if it is in a file
    std::string drmContentId;
    BootstrapBuilder bootstrapBuilder;
    std::string bootstrapUrl;            ///< where the bootstrap lies, if it is in a file
    std::vector<std::uint8_t> metadata;  ///< the onMetaData record
    double bitrate = 0.0;                ///< left out of the file when 0
    std::string bootstrapInfoId;
    std::string drmAdditionalHeaderId;
    kvl::minidom::ElementPtr element;  ///< the `media` element; null until there is one

    BootstrapInfo& bootstrap() { return bootstrapBuilder.bootstrap(); }
    const BootstrapInfo& bootstrap() const { return bootstrapBuilder.bootstrap(); }
};

}  // namespace torvo::kzs
