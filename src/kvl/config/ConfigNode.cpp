#include "kvl/config/ConfigNode.h"

#include <algorithm>

#include <boost/lexical_cast.hpp>

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
    const std::string text = textOr(node, "");
    constexpr const char* kWhiteSpace = " \t\n\v\f\r";
    const std::size_t begin = text.find_first_not_of(kWhiteSpace);
    if (begin == std::string::npos) return defaultNumber;
    const std::size_t end = text.find_last_not_of(kWhiteSpace) + 1;
    double number = 0.0;
    if (!boost::conversion::try_lexical_convert(text.substr(begin, end - begin), number)) {
        return defaultNumber;
    }
    return number;
}

}  // namespace kvl::config
