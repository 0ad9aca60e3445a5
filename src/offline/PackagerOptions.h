#pragma once

#include <string>
#include <vector>

#include <boost/program_options/options_description.hpp>
#include <boost/program_options/variables_map.hpp>

#include "offline/OptionMap.h"
#include "offline/OptionTable.h"

namespace torvo::offline {

/// Brings the settings together: default, then configuration file, then command line.
class PackagerOptions {
public:
    PackagerOptions();

    /// Fills the values and the two texts. Throws ProgramOptionsException for a command line that
    /// doesn't fit the table, FileNotFoundException or XMLConfigException for the configuration
    /// file, EncryptionInfoException for protection options that are begun and not complete.
    void parse(const std::vector<std::string>& arguments);

    const OptionMap& values() const { return values_; }
    const std::string& helpText() const { return helpText_; }
    const std::string& versionText() const { return versionText_; }
    const OptionTable& table() const { return options_; }

private:
    void readCommandLine(const std::vector<std::string>& arguments,
                         const boost::program_options::options_description& description,
                         boost::program_options::variables_map& given) const;
    void readConfigurationFile(const boost::program_options::variables_map& given);

    std::string defaultFileName_ = "kzspackager_config.xml";
    OptionTable options_;
    OptionMap values_;
    std::string helpText_;
    std::string versionText_;
};

/// Parses into `options`, which then has every key of the table. Throws as PackagerOptions::parse.
void parseOptions(OptionMap& options, const std::vector<std::string>& arguments,
                  std::string& helpText, std::string& versionText);

/// Throws EncryptionInfoException for the first empty protection option once one in front of it
/// has a value, or in any case with `update-drm-info`.
///
/// On purpose: read from the front only. An option that is set behind all the empty ones goes
/// unnoticed, so `content-id` alone passes.
/// Pinned by ProtectionOptionsTest.ASetIsReadFromTheFrontOnly.
void checkProtectionOptions(const OptionMap& options);

}  // namespace torvo::offline
