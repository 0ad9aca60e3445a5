#include "offline/OptionMap.h"

namespace torvo::offline {

bool flagOf(const OptionMap& options, const std::string& key) {
    return boost::any_cast<bool>(options.at(key));
}

double numberOf(const OptionMap& options, const std::string& key) {
    return boost::any_cast<double>(options.at(key));
}

const std::string& textOf(const OptionMap& options, const std::string& key) {
    return boost::any_cast<const std::string&>(options.at(key));
}

}  // namespace torvo::offline
