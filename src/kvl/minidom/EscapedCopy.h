#pragma once

#include "kvl/minidom/Node.h"

namespace kvl::minidom {

/// A copy of the document in which texts, attribute values and namespace URIs have their markup
/// characters replaced by references, ready to be written as they are.
///
/// Raw markup is copied untouched, and so is the text inside a CDATA section.
DocumentPtr escapedCopy(const Document& document);

}  // namespace kvl::minidom
