#pragma once

#include <map>
#include <string>

#include <boost/any.hpp>

namespace torvo::offline {

/// The settings of a job: option key to a bool, a double or a std::string, as the option's class
/// says. Keys sort by byte value. Filled once by option parsing and read-only from then on, but
/// for the password, which is wiped once it was used.
using OptionMap = std::map<std::string, boost::any>;

/// The value of an option. Throw std::out_of_range for an unknown key and boost::bad_any_cast for
/// an option of another type; neither happens with the keys of the option table.
bool flagOf(const OptionMap& options, const std::string& key);
double numberOf(const OptionMap& options, const std::string& key);
const std::string& textOf(const OptionMap& options, const std::string& key);

}  // namespace torvo::offline
