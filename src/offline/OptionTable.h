#pragma once

#include <memory>
#include <utility>
#include <vector>

#include "offline/ConfigType.h"

namespace torvo::offline {

/// Option keys with their behaviour, in the order of the help listing and of every pass. The keys
/// are constant texts.
using OptionTable = std::vector<std::pair<const char*, std::unique_ptr<ConfigType>>>;

/// All options of the program with their defaults and help texts.
OptionTable makeOptionTable();

}  // namespace torvo::offline
