#pragma once

#include <cstdint>
#include <vector>

#include "offline/OptionMap.h"

namespace torvo::kzspkgutil {
class IKZSMediaWriterPolicy;
class IPackagerContext;
}  // namespace torvo::kzspkgutil

namespace torvo::offline {

/// Packages `input-file` into `output-path`: segments, index files, manifest, and with
/// `external-bootstrap` the files beside it. Whether the content is protected is up to the policy
/// alone; `protectionHeader` is its header for the manifest, empty for a plain run.
///
/// The manifest is the last file that is written. Throws classes of the OfflineException family,
/// and untranslated what the layers below throw.
void packageInput(const OptionMap& options, kzspkgutil::IPackagerContext& context,
                  kzspkgutil::IKZSMediaWriterPolicy& policy,
                  const std::vector<std::uint8_t>& protectionHeader);

}  // namespace torvo::offline
