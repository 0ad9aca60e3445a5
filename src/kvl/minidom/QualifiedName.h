#pragma once

#include <string>

namespace kvl::minidom {

/// A name in its two halves, divided at the last colon; no colon means no prefix.
///
/// The parser's names have a namespace URI where written names have a prefix.
struct QualifiedName {
    std::string prefix;
    std::string localName;
};

QualifiedName splitName(const std::string& name);
std::string joinName(const std::string& prefix, const std::string& localName);

}  // namespace kvl::minidom
