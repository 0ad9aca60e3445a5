#pragma once

#include <string>

#include <boost/any.hpp>
#include <boost/program_options/options_description.hpp>
#include <boost/program_options/variables_map.hpp>

#include "offline/OptionMap.h"

namespace kvl::config {
class ConfigNode;
}

namespace torvo::offline {

/// How an option behaves in its three sources: its default, the configuration file and the
/// command line. Help texts are constant and outlive the objects.
///
///   class               value   on the command line    in the file
///   NoValueConfigType   bool    a switch               "true", anything else is false
///   BoolConfigType      bool    a required bool value  "true", "false", anything else: default
///   DoubleConfigType    double  a required number      a number, anything else: default
///   StringConfigType    string  a required text        the text, none: default
class ConfigType {
public:
    virtual ~ConfigType() = default;

    virtual boost::any defaultValue() const = 0;
    virtual void addToDescription(boost::program_options::options_description& description,
                                  const char* key) const = 0;
    /// Sets the entry of `key` from the first child of that name of `settings`, in any case.
    virtual void readFromConfig(OptionMap& options, const kvl::config::ConfigNode& settings,
                                const std::string& key) const = 0;
    /// Overwrites the entry of `key` if the command line has the option.
    virtual void readFromCommandLine(OptionMap& options,
                                     const boost::program_options::variables_map& given,
                                     const std::string& key) const = 0;
};

/// A switch. What the file turns on the command line can't turn off.
class NoValueConfigType final : public ConfigType {
public:
    explicit NoValueConfigType(const char* helpText) : helpText_(helpText) {}

    boost::any defaultValue() const override;
    void addToDescription(boost::program_options::options_description& description,
                          const char* key) const override;
    void readFromConfig(OptionMap& options, const kvl::config::ConfigNode& settings,
                        const std::string& key) const override;
    void readFromCommandLine(OptionMap& options, const boost::program_options::variables_map& given,
                             const std::string& key) const override;

private:
    const char* helpText_;
};

class BoolConfigType final : public ConfigType {
public:
    BoolConfigType(bool defaultValue, const char* helpText)
        : default_(defaultValue), helpText_(helpText) {}

    boost::any defaultValue() const override;
    void addToDescription(boost::program_options::options_description& description,
                          const char* key) const override;
    void readFromConfig(OptionMap& options, const kvl::config::ConfigNode& settings,
                        const std::string& key) const override;
    void readFromCommandLine(OptionMap& options, const boost::program_options::variables_map& given,
                             const std::string& key) const override;

private:
    bool default_;
    const char* helpText_;
};

class DoubleConfigType final : public ConfigType {
public:
    DoubleConfigType(double defaultValue, const char* helpText)
        : default_(defaultValue), helpText_(helpText) {}

    boost::any defaultValue() const override;
    void addToDescription(boost::program_options::options_description& description,
                          const char* key) const override;
    void readFromConfig(OptionMap& options, const kvl::config::ConfigNode& settings,
                        const std::string& key) const override;
    void readFromCommandLine(OptionMap& options, const boost::program_options::variables_map& given,
                             const std::string& key) const override;

private:
    double default_;
    const char* helpText_;
};

class StringConfigType final : public ConfigType {
public:
    StringConfigType(std::string defaultValue, const char* helpText);

    boost::any defaultValue() const override;
    void addToDescription(boost::program_options::options_description& description,
                          const char* key) const override;
    void readFromConfig(OptionMap& options, const kvl::config::ConfigNode& settings,
                        const std::string& key) const override;
    void readFromCommandLine(OptionMap& options, const boost::program_options::variables_map& given,
                             const std::string& key) const override;

private:
    std::string default_;
    const char* helpText_;
};

}  // namespace torvo::offline
