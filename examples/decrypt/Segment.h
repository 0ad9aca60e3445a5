#pragma once

#include <functional>
#include <string>

#include "decrypt/LicenseServer.h"

namespace decrypt {

/// A whole file. Throws std::runtime_error.
Bytes readFile(const std::string& path);

/// The text of the first `flxs` box of a segment file: the protection metadata as base64. Empty for
/// a clear file.
std::string metadataTextOf(const Bytes& segment);

/// Calls `take` with each FLV tag image of a segment file in order: the content of its `mdat` boxes
/// is tag images, one behind the other. Throws std::runtime_error for a file that isn't so.
void forEachTag(const Bytes& segment, const std::function<void(const Bytes& tag)>& take);

}  // namespace decrypt
