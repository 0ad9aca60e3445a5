#include "offline/PackagerOptions.h"

#include <locale>
#include <new>
#include <sstream>

#include <boost/filesystem/operations.hpp>
#include <boost/filesystem/path.hpp>
#include <boost/program_options/errors.hpp>
#include <boost/program_options/parsers.hpp>
#include <boost/program_options/positional_options.hpp>

#include "kvl/config/ConfigNode.h"
#include "kvl/config/ConfigReader.h"
#include "offline/OfflineException.h"

namespace torvo::offline {
namespace {

namespace po = boost::program_options;

// On purpose: the version's numbers stand between commas, and the usage in the help below calls the
// program by its file name instead. Pinned by PackagerOptionsTest.TheHelpTextIsFramedAndWrapped.
constexpr const char* kProgramName = "KZSpackager";
constexpr const char* kVersion = "5,0,16,5016";
constexpr const char* kCaption = "Allowed options";
constexpr unsigned kLineLength = 80;

struct ProtectionOption {
    const char* key;
    const char* message;  ///< when it is missing
};

constexpr ProtectionOption kProtectionOptions[] = {
    {"license-server-url", "no license server URL specified"},
    {"transport-cert", "no transport certificate specified"},
    {"license-server-cert", "no license server certificate specified"},
    {"packager-credential", "no packager credential specified"},
    {"credential-pwd", "no packager credential password specified"},
    {"policy-file", "no policy specified"},
    {"common-key", "no common key specified"},
    {"content-id", "no content ID specified"},
};

void requireAllProtectionOptions(const OptionMap& options) {
    for (const ProtectionOption& option : kProtectionOptions) {
        if (textOf(options, option.key).empty()) throw EncryptionInfoException(option.message);
    }
}

/// Brings all options into one description.
void describe(const OptionTable& table, po::options_description& description) {
    for (const auto& [key, type] : table) type->addToDescription(description, key);
    // The names are read from a stream, which keeps a lack of memory to itself.
    for (const auto& option : description.options()) {
        if (option->long_name().empty()) throw std::bad_alloc();
    }
}

std::string makeVersionText() {
    std::ostringstream text;
    text.exceptions(std::ios::failbit | std::ios::badbit);
    text.imbue(std::locale::classic());
    text << '\n' << kProgramName << " version " << kVersion << std::endl;
    return text.str();
}

std::string makeHelpText(const po::options_description& description) {
    std::ostringstream text;
    text.exceptions(std::ios::failbit | std::ios::badbit);
    text.imbue(std::locale::classic());
    text << '\n'
         << kProgramName << " version " << kVersion << " - "
         << "Tool to fragment content into kzs data." << '\n'
         << "Copyright (c) 2026 The kzspackager authors" << '\n'
         << "https://kzspackager.example/" << '\n'
         << '\n'
         << "Usage: kzspackager --input-file=<file> --[setting]=[arg]..." << '\n'
         << description << std::endl;
    return text.str();
}

}  // namespace

PackagerOptions::PackagerOptions() : options_(makeOptionTable()) {}

void PackagerOptions::parse(const std::vector<std::string>& arguments) {
    for (const auto& [key, type] : options_) values_[key] = type->defaultValue();

    po::options_description description(kCaption, kLineLength);
    describe(options_, description);

    po::variables_map given;
    readCommandLine(arguments, description, given);
    readConfigurationFile(given);
    for (const auto& [key, type] : options_) type->readFromCommandLine(values_, given, key);

    helpText_ = makeHelpText(description);
    versionText_ = makeVersionText();
    checkProtectionOptions(values_);
}

void PackagerOptions::readCommandLine(const std::vector<std::string>& arguments,
                                      const po::options_description& description,
                                      po::variables_map& given) const {
    try {
        // No positional words at all: without this they would be dropped in silence.
        const po::positional_options_description noPositionalWords;
        po::store(po::command_line_parser(arguments)
                      .options(description)
                      .positional(noPositionalWords)
                      .run(),
                  given);
        po::notify(given);
    } catch (const po::error&) {
        // On purpose: what was wrong isn't told, only how to call the program.
        // Pinned by PackagerOptionsTest.ABadCommandLineIsToldTheUsageAlone.
        throw ProgramOptionsException(kProgramName);
    }
}

void PackagerOptions::readConfigurationFile(const po::variables_map& given) {
    const bool isRequired = given.count("conf-file") != 0;
    const std::string path = isRequired ? given["conf-file"].as<std::string>() : defaultFileName_;
    boost::system::error_code unreachable;
    if (!boost::filesystem::exists(path, unreachable)) {
        if (isRequired) throw FileNotFoundException(path);
        return;
    }
    try {
        kvl::config::ConfigNode tree;
        kvl::config::readFile(tree, path);
        // A file that can't be opened counts as empty: no element is a default for all.
        const kvl::config::ConfigNode empty;
        const kvl::config::ConfigNode& settings =
            tree.children.empty() ? empty : *tree.children.front();
        // On purpose: all options are read from any file, so `help` in the default one makes every
        // run print the help, and `conf-file` has no effect. The root may have any name.
        // Pinned by OptionsCliTest.TheDefaultSettingsFileIsReadFromTheCurrentFolder and
        // PackagerOptionsTest.OnlyTheFirstOfTwoEqualElementsAndOnlyDirectChildrenCount.
        for (const auto& [key, type] : options_) type->readFromConfig(values_, settings, key);
    } catch (const kvl::config::ConfigException& failure) {
        throw XMLConfigException(failure.what());
    }
}

void parseOptions(OptionMap& options, const std::vector<std::string>& arguments,
                  std::string& helpText, std::string& versionText) {
    PackagerOptions parser;
    parser.parse(arguments);
    options = parser.values();
    helpText = parser.helpText();
    versionText = parser.versionText();
}

void checkProtectionOptions(const OptionMap& options) {
    bool areAllNeeded = flagOf(options, "update-drm-info");
    for (const ProtectionOption& option : kProtectionOptions) {
        if (!textOf(options, option.key).empty()) {
            areAllNeeded = true;
        } else if (areAllNeeded) {
            requireAllProtectionOptions(options);
        }
    }
}

}  // namespace torvo::offline
