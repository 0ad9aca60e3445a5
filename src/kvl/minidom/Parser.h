#pragma once

#include <istream>
#include <string>

#include "kvl/minidom/Node.h"

namespace kvl::minidom {

/// Reads an XML file into a document.
///
/// A text that consists of several lines is joined without its line ends, and lines of nothing
/// but white space are dropped; unless `keepWhitespace` is set, each line loses the white space
/// at its ends. Comments and the like inside the root become nodes of type `raw`; what stands
/// outside the root is dropped.
///
/// Throws XMLParseException if the text isn't well-formed, NamespaceException if a name has a
/// namespace that the text doesn't bind (`xml:lang` is one), and a plain standard exception if
/// the file can't be read or its elements nest more than 256 deep.
DocumentPtr parseFile(const std::string& path, bool keepWhitespace);

/// The same for a stream, from its position to its end.
DocumentPtr parseStream(std::istream& stream, bool keepWhitespace);

}  // namespace kvl::minidom
