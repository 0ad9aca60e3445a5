#pragma once

#include "offline/OptionMap.h"

namespace torvo::kzspkgutil {
class IPackagerContext;
}

namespace torvo::offline {

/// The packaging flow of a protected job, in which the encryption library is up: packages the
/// input, or with `update-drm-info` gives a manifest a new protection header.
///
/// Wipes the password from `options` as soon as the protection is set up. `context` outlives the
/// flow. Throws as packageInput does, and hlx::HLXException.
void runProtectedFlow(OptionMap& options, kzspkgutil::IPackagerContext& context);

}  // namespace torvo::offline
