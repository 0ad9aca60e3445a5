#pragma once

#include "offline/OptionMap.h"

namespace torvo::kzspkgutil {
class IPackagerContext;
}

namespace torvo::offline {

/// The packaging flow of a protected job, in which the encryption library is up: packages the
/// input, or with `update-drm-info` gives a manifest a new protection header.
///
/// `context` outlives the flow. Throws as packageInput does, and hlx::HLXException.
void runProtectedFlow(const OptionMap& options, kzspkgutil::IPackagerContext& context);

}  // namespace torvo::offline
