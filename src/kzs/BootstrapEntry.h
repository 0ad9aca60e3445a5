#pragma once

#include <string>

#include "kzs/BootstrapInfo.h"

namespace torvo::kzs {

/// What a `bootstrapInfo` element holds: a bootstrap, or the place of its file.
struct BootstrapEntry {
    std::string url;
    BootstrapInfo info;  ///< of a loaded element: empty when there is a url
};

}  // namespace torvo::kzs
