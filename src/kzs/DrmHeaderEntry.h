#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace torvo::kzs {

/// What a `drmAdditionalHeader` element holds: a protection header, or the place of its file.
struct DrmHeaderEntry {
    std::vector<std::uint8_t> data;  ///< of a loaded element: empty when there is a url
    std::string url;
    std::string drmContentId;
    bool dirty = false;  ///< the element in the document must be rewritten
};

}  // namespace torvo::kzs
