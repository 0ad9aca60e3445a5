#pragma once

#include <string>

#include "offline/OptionMap.h"

namespace torvo::offline {

/// The stem of all names of a run: the last component of `output-manifest-file`, or if that is
/// empty of `input-file`, without its extension. Folders in it have no effect.
std::string baseNameOf(const OptionMap& options);

/// The path of a file of that name in `output-path`.
std::string pathInOutput(const OptionMap& options, const std::string& name);

/// Makes `output-path` with all missing parents. Throws boost::filesystem::filesystem_error.
void makeOutputPath(const OptionMap& options);

/// Throws CantAccessFileException where writing `path` would overwrite the file `inputPath`, under
/// whatever name.
void refuseInput(const std::string& path, const std::string& inputPath);

/// The last component of a path.
std::string lastComponentOf(const std::string& path);

}  // namespace torvo::offline
