#pragma once

#include <iosfwd>

#include "offline/OptionMap.h"

namespace torvo::offline {

/// The inspect modes print to `out` what `input-file`, written by this program, holds. They throw
/// FileNotFoundException or PathNotFileException for the path; lines printed before a failure
/// stay printed.

/// The index at the start of the file. Throws kzs::InvalidAfraFormat.
void inspectIndex(const OptionMap& options, std::ostream& out);

/// The bootstrap at the start of the file. Throws InvalidBootstrapException.
void inspectBootstrap(const OptionMap& options, std::ostream& out);

/// Every index of the file with the next bootstrap behind it, found by their type bytes alone.
/// Nothing is printed for a file without any. Throws as the two above.
void inspectFragments(const OptionMap& options, std::ostream& out);

}  // namespace torvo::offline
