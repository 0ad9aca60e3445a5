#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "offline/OptionMap.h"

namespace torvo::offline {

/// Writes a copy of `manifest-file` whose protection headers are `additionalHeader`. No media is
/// read or written.
///
/// The copy lies in `output-path`, with the extension ".kzd": under the name of
/// `output-manifest-file`, in the place of a file that is there, or if that is empty under a new
/// name made from that of the old manifest. A manifest whose header lies in a file of its own gets
/// a new such file, with the extension ".drmmeta".
///
/// Throws ManifestFileNotGivenException, what makeManifest throws, and std::ios_base::failure.
void updateManifest(const OptionMap& options, const std::vector<std::uint8_t>& additionalHeader);

/// The first of `path` with "_1", "_2" and so on ahead of its extension that doesn't exist.
///
/// On purpose: `path` itself is never the answer, not even where nothing is there.
/// Pinned by ManifestUpdateTest.UniquePathNeverAnswersThePathItself.
std::string uniquePath(const std::string& path);

}  // namespace torvo::offline
