#pragma once

#include <iosfwd>
#include <string>

namespace kvl::config {

class ConfigNode;

/// Reads an XML file; its document element becomes a child of `root`.
///
/// Throws FileDoesNotExistException if there is no such path and BadFileException if the
/// content isn't well-formed or nests more than 256 elements; the tree is then half filled.
/// A file that exists but can't be opened counts as empty and leaves `root` as it is.
void readFile(ConfigNode& root, const std::string& path);

/// The same for a stream, from its position to its end.
void readStream(ConfigNode& root, std::istream& stream);

}  // namespace kvl::config
