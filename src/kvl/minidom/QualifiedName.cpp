#include "kvl/minidom/QualifiedName.h"

namespace kvl::minidom {

QualifiedName splitName(const std::string& name) {
    const std::size_t colon = name.rfind(':');
    if (colon == std::string::npos) return {"", name};
    return {name.substr(0, colon), name.substr(colon + 1)};
}

std::string joinName(const std::string& prefix, const std::string& localName) {
    return prefix.empty() ? localName : prefix + ":" + localName;
}

}  // namespace kvl::minidom
