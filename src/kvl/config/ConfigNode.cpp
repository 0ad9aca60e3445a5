#include "kvl/config/ConfigNode.h"

#include <algorithm>

#include <boost/lexical_cast.hpp>

#include "kvl/WhiteSpace.h"

namespace kvl::config {

ConfigNode* ConfigNode::child(const std::string& childName) const {
    const auto hit = std::find_if(children.begin(), children.end(),
                                  [&](const auto& node) { return node->name == childName; });
    return hit == children.end() ? nullptr : hit->get();
}

std::string ConfigNode::text() const {
    if (!hasData) throw NoDataException();
    return data;
}

std::string textOr(const ConfigNode* node, const std::string& defaultText) {
    if (node == nullptr) return defaultText;
    try {
        return node->text();
    } catch (const ConfigException&) {
        return defaultText;
    }
}

double numberOr(const ConfigNode* node, double defaultNumber) {
    double number = 0.0;
    const bool isNumber = boost::conversion::try_lexical_convert(trimmed(textOr(node, "")), number);
    return isNumber ? number : defaultNumber;
}

}  // namespace kvl::config
