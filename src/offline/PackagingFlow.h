#pragma once

#include "offline/OptionMap.h"

namespace torvo::offline {

/// Packages the input, or with `update-drm-info` rewrites a manifest, protected if `common-key`
/// has a value. Fails with classes of the OfflineException family only.
void runPackagingFlow(const OptionMap& options);

}  // namespace torvo::offline
