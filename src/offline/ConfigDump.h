#pragma once

#include <iosfwd>

#include "offline/OptionMap.h"

namespace torvo::offline {

/// Prints a line "key : value" for each setting that is a number or a text, in key order.
///
/// On purpose: switches and the three encryption choices, which are bools, are left out.
/// Pinned by RunModesTest.TheDumpShowsNumbersAndTextsInKeyOrder.
void dumpConfig(const OptionMap& options, std::ostream& out);

}  // namespace torvo::offline
