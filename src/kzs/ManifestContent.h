#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "kvl/minidom/Node.h"
#include "kzs/BootstrapEntry.h"
#include "kzs/DrmHeaderEntry.h"
#include "kzs/Rendition.h"

namespace torvo::kzs {

/// The namespace of all elements of a manifest.
constexpr const char* kManifestNamespace = "http://ns.kzspackager.example/kzd/1.0";

/// What a Manifest holds: the document, and beside it what its elements mean. The two agree
/// only after a commit.
struct ManifestContent {
    kvl::minidom::DocumentPtr document;
    std::uint32_t fragmentDuration = 0;  ///< milliseconds, as the three below
    double durationPrecision = 0.0;
    double frameDuration = 0.0;
    std::uint32_t allowedDrift = 0;
    std::map<std::string, Rendition> renditions;  ///< by stream id
    std::map<std::string, BootstrapEntry> bootstraps;
    std::map<std::string, DrmHeaderEntry> drmHeaders;
    bool loadMedia = false;  ///< false for a manifest built from nothing
};

/// A rendition whose bootstrap follows the timing of the manifest.
Rendition makeRendition(const ManifestContent& content);

}  // namespace torvo::kzs
