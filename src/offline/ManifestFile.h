#pragma once

#include <memory>
#include <string>

#include "kzs/Manifest.h"
#include "offline/OptionMap.h"

namespace torvo::offline {

/// The manifest of a run: that of `manifest-file` if it is given, else a new one with this id and
/// duration. A loaded one keeps its own.
///
/// Throws StdErrorException for bad timing options, before all else; FileNotFoundException,
/// PathNotFileException or InvalidInputFileException with the path of `manifest-file`; and what
/// the Manifest throws for the content.
std::unique_ptr<kzs::Manifest> makeManifest(const OptionMap& options, const std::string& id,
                                            double durationSeconds);

/// Writes the committed manifest in the place of a file that is there, which is emptied once the
/// whole text stands in memory. Throws std::ios_base::failure.
void writeManifestFile(const kzs::Manifest& manifest, const std::string& path);

}  // namespace torvo::offline
