#pragma once

#include <iosfwd>
#include <string>

#include "offline/OptionMap.h"

namespace torvo::offline {

/// Runs the first mode other than packaging that the options ask for, printing to `out`. Returns
/// true when one ran, its output flushed.
///
/// Throws InputFileNotGivenException when a mode behind help and version has no input, the
/// failures of the modes, and StdErrorException for every standard exception on the way, a failed
/// write to `out` included.
bool runModes(const OptionMap& options, const std::string& helpText, const std::string& versionText,
              std::ostream& out);

}  // namespace torvo::offline
