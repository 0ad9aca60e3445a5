#include "offline/ConfigType.h"

#include <utility>

#include <boost/program_options/value_semantic.hpp>

#include "kvl/WhiteSpace.h"
#include "kvl/config/ConfigNode.h"

namespace torvo::offline {
namespace {

namespace po = boost::program_options;

/// The text of the setting without the white space at its ends: files indent and align values.
std::string trimmedText(const kvl::config::ConfigNode& settings, const std::string& key) {
    return kvl::trimmed(kvl::config::textOr(settings.child(key), ""));
}

template <typename Value>
void copyGiven(OptionMap& options, const po::variables_map& given, const std::string& key) {
    if (given.count(key) != 0) options[key] = given[key].as<Value>();
}

}  // namespace

boost::any NoValueConfigType::defaultValue() const { return false; }

void NoValueConfigType::addToDescription(po::options_description& description,
                                         const char* key) const {
    description.add_options()(key, helpText_);
}

void NoValueConfigType::readFromConfig(OptionMap& options, const kvl::config::ConfigNode& settings,
                                       const std::string& key) const {
    // On purpose: only this one word turns a switch on; "yes", "1" and "TRUE" don't.
    // Pinned by ConfigTypeTest.ASwitchKnowsOnlyTheWordTrue.
    options[key] = trimmedText(settings, key) == "true";
}

void NoValueConfigType::readFromCommandLine(OptionMap& options, const po::variables_map& given,
                                            const std::string& key) const {
    // On purpose: a switch that the settings file has turned on can't be turned off.
    // Pinned by OptionsCliTest.ASwitchOfTheSettingsFileCanNotBeTurnedOff.
    if (given.count(key) != 0) options[key] = true;
}

boost::any BoolConfigType::defaultValue() const { return default_; }

void BoolConfigType::addToDescription(po::options_description& description, const char* key) const {
    description.add_options()(key, po::value<bool>(), helpText_);
}

void BoolConfigType::readFromConfig(OptionMap& options, const kvl::config::ConfigNode& settings,
                                    const std::string& key) const {
    const std::string text = trimmedText(settings, key);
    // On purpose: fewer words than on the command line, and no failure for the others.
    // Pinned by ConfigTypeTest.ABoolTakesTwoWordsAndElseItsDefault.
    options[key] = text == "true" || (text != "false" && default_);
}

void BoolConfigType::readFromCommandLine(OptionMap& options, const po::variables_map& given,
                                         const std::string& key) const {
    copyGiven<bool>(options, given, key);
}

boost::any DoubleConfigType::defaultValue() const { return default_; }

void DoubleConfigType::addToDescription(po::options_description& description,
                                        const char* key) const {
    description.add_options()(key, po::value<double>(), helpText_);
}

void DoubleConfigType::readFromConfig(OptionMap& options, const kvl::config::ConfigNode& settings,
                                      const std::string& key) const {
    // On purpose: a text that is no number gives the default without a word.
    // Pinned by ConfigTypeTest.ANumberThatDoesNotConvertIsTheDefault.
    options[key] = kvl::config::numberOr(settings.child(key), default_);
}

void DoubleConfigType::readFromCommandLine(OptionMap& options, const po::variables_map& given,
                                           const std::string& key) const {
    copyGiven<double>(options, given, key);
}

StringConfigType::StringConfigType(std::string defaultValue, const char* helpText)
    : default_(std::move(defaultValue)), helpText_(helpText) {}

boost::any StringConfigType::defaultValue() const { return default_; }

void StringConfigType::addToDescription(po::options_description& description,
                                        const char* key) const {
    description.add_options()(key, po::value<std::string>(), helpText_);
}

void StringConfigType::readFromConfig(OptionMap& options, const kvl::config::ConfigNode& settings,
                                      const std::string& key) const {
    options[key] = kvl::config::textOr(settings.child(key), default_);
}

void StringConfigType::readFromCommandLine(OptionMap& options, const po::variables_map& given,
                                           const std::string& key) const {
    copyGiven<std::string>(options, given, key);
}

}  // namespace torvo::offline
