#include "offline/ConfigDump.h"

#include <ostream>

#include <boost/format.hpp>

namespace torvo::offline {

void dumpConfig(const OptionMap& options, std::ostream& out) {
    constexpr const char* kLine = "%1% : %2%\n";
    for (const auto& [key, value] : options) {
        if (const auto* number = boost::any_cast<double>(&value)) {
            out << boost::format(kLine) % key % *number;
        } else if (const auto* text = boost::any_cast<std::string>(&value)) {
            out << boost::format(kLine) % key % *text;
        }
    }
}

}  // namespace torvo::offline
