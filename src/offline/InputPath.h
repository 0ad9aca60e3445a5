#pragma once

#include <string>

namespace torvo::offline {

/// Throws FileNotFoundException if nothing is at `path`, PathNotFileException if it is a folder,
/// and boost::filesystem::filesystem_error where that can't be told.
void requireFile(const std::string& path);

}  // namespace torvo::offline
