#pragma once

#include <string>
#include <vector>

#include "support/Process.h"

namespace kz::test {

/// Runs the packager with these arguments.
inline ProcessResult packager(std::vector<std::string> arguments,
                              const ProcessSettings& settings = {}) {
    arguments.insert(arguments.begin(), KZ_PACKAGER);
    return run(arguments, settings);
}

/// The same in a folder.
inline ProcessResult packagerIn(const std::string& folder, std::vector<std::string> arguments) {
    ProcessSettings settings;
    settings.workingDirectory = folder;
    return packager(std::move(arguments), settings);
}

}  // namespace kz::test
