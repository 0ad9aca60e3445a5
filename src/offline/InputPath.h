#pragma once

#include <string>

namespace torvo::offline {

/// Throws FileNotFoundException if nothing is at `path`, PathNotFileException if it is a folder,
/// and boost::filesystem::filesystem_error where that can't be told.
void requireFile(const std::string& path);

/// Throws PathNotFileException if a FIFO is at `path`. Recordings are read here and there, which no
/// FIFO allows, and the opening of one waits until somebody writes to it, for ever if nobody does.
void refuseFifo(const std::string& path);

}  // namespace torvo::offline
