#pragma once

#include <ostream>
#include <string>

#include "kvl/minidom/Node.h"

namespace kvl::minidom {

/// Writes the document as XML text in UTF-8.
///
/// `indent` is put in front of every line once for each level; with an empty one the whole text
/// is one line. On purpose values go out as they are in the tree: what has to be escaped must be
/// escaped already. Pinned by SerialiserTest.WritesValuesAsTheyAreInTheTree. Failures are left to
/// the stream's exception setting.
void writeDocument(std::ostream& stream, const Document& document, const std::string& indent);

}  // namespace kvl::minidom
