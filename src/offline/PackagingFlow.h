#pragma once

#include "offline/OptionMap.h"

namespace torvo::offline {

/// Packages the input, or with `update-drm-info` rewrites a manifest, protected if `common-key`
/// has a value; a password is wiped from `options` once it was used. Fails with classes of the
/// OfflineException family only.
void runPackagingFlow(OptionMap& options);

}  // namespace torvo::offline
