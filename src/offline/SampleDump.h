#pragma once

#include <iosfwd>

#include "offline/OptionMap.h"

namespace torvo::offline {

/// Prints a line for each sample of the KZM file `input-file` with the fragment that it would
/// fall into. Nothing is packaged. Throws StdErrorException for bad timing options, before the
/// input is opened, and what the number of a qlix::kzm::Exception stands for.
void dumpSamples(const OptionMap& options, std::ostream& out);

}  // namespace torvo::offline
