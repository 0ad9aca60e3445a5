#pragma once

#include <string>
#include <vector>

#include "offline/OptionMap.h"
#include "offline/OptionTable.h"
#include "offline/PackagerOptions.h"

namespace torvo::offline {

/// The options of a command line, without a configuration file in the way of the test.
inline OptionMap parsed(const std::vector<std::string>& arguments) {
    OptionMap options;
    std::string help;
    std::string version;
    parseOptions(options, arguments, help, version);
    return options;
}

/// The defaults, some replaced. No check is made on them.
inline OptionMap defaultsWith(const OptionMap& replaced) {
    OptionMap options;
    for (const auto& [key, type] : makeOptionTable()) options[key] = type->defaultValue();
    for (const auto& [key, value] : replaced) options[key] = value;
    return options;
}

}  // namespace torvo::offline
