#include <filesystem>

#include <gtest/gtest.h>

#include "offline/OfflineException.h"
#include "offline/OptionFixture.h"
#include "offline/PackagerOptions.h"
#include "support/TempDir.h"

namespace torvo::offline {
namespace {

using kz::test::TempDir;
using kz::test::text;

struct Expected {
    const char* key;
    char kind;  // N switch, B bool, D number, S text
    const char* value;
};

// In the order of the help listing.
constexpr Expected kTable[] = {
    {"help", 'N', ""},
    {"version", 'N', ""},
    {"input-file", 'S', ""},
    {"output-path", 'S', "."},
    {"manifest-file", 'S', ""},
    {"output-manifest-file", 'S', ""},
    {"bitrate", 'D', "0"},
    {"license-server-url", 'S', ""},
    {"transport-cert", 'S', ""},
    {"license-server-cert", 'S', ""},
    {"packager-credential", 'S', ""},
    {"credential-pwd", 'S', ""},
    {"policy-file", 'S', ""},
    {"common-key", 'S', ""},
    {"content-id", 'S', ""},
    {"encrypt-audio", 'B', "1"},
    {"encrypt-data", 'B', "1"},
    {"encrypt-video", 'B', "1"},
    {"ms-unencrypted", 'D', "0"},
    {"video-encrypt-level", 'D', "2"},
    {"fragment-duration", 'D', "4"},
    {"duration-precision", 'D', "0.1"},
    {"frame-rate", 'D', "0"},
    {"frames-per-keyframe-interval", 'D', "0"},
    {"keyframe-intervals-per-fragment", 'D', "1"},
    {"frame-precision", 'D', "1"},
    {"allowed-drift", 'D', "1"},
    {"segment-duration", 'D', "0"},
    {"conf-file", 'S', ""},
    {"config-dump", 'N', ""},
    {"sample-dump", 'N', ""},
    {"external-bootstrap", 'N', ""},
    {"inspect-fragments", 'N', ""},
    {"inspect-bootstrap", 'N', ""},
    {"inspect-index", 'N', ""},
    {"dump-drm-metadata", 'N', ""},
    {"edit-list", 'N', ""},
    {"update-drm-info", 'N', ""},
};

TEST(PackagerOptionsTest, TheTableHasAllOptionsInOrderWithTheirDefaults) {
    const OptionTable table = makeOptionTable();
    ASSERT_EQ(table.size(), std::size(kTable));
    for (std::size_t i = 0; i < table.size(); ++i) {
        const Expected& expected = kTable[i];
        EXPECT_STREQ(table[i].first, expected.key);
        const boost::any value = table[i].second->defaultValue();
        switch (expected.kind) {
            case 'N':
                EXPECT_NE(dynamic_cast<const NoValueConfigType*>(table[i].second.get()), nullptr);
                EXPECT_FALSE(boost::any_cast<bool>(value)) << expected.key;
                break;
            case 'B':
                EXPECT_TRUE(boost::any_cast<bool>(value)) << expected.key;
                break;
            case 'D':
                EXPECT_EQ(boost::any_cast<double>(value), std::stod(expected.value))
                    << expected.key;
                break;
            default:
                EXPECT_EQ(boost::any_cast<std::string>(value), expected.value) << expected.key;
        }
    }
}

TEST(PackagerOptionsTest, EveryKeyIsInTheResult) {
    EXPECT_EQ(parsed({}).size(), std::size(kTable));
}

TEST(PackagerOptionsTest, TheCommandLineGivesValuesWithABlankOrAnEqualsSign) {
    const OptionMap options = parsed({"--input-file", "a.flv", "--bitrate=1500", "--edit-list",
                                      "--encrypt-audio=no", "--allowed-drift", "-1"});
    EXPECT_EQ(textOf(options, "input-file"), "a.flv");
    EXPECT_EQ(numberOf(options, "bitrate"), 1500.0);
    EXPECT_TRUE(flagOf(options, "edit-list"));
    EXPECT_FALSE(flagOf(options, "encrypt-audio"));
    EXPECT_EQ(numberOf(options, "allowed-drift"), -1.0);
}

TEST(PackagerOptionsTest, BoolValuesTakeManyWordsOnTheCommandLine) {
    for (const char* word : {"no", "off", "0", "false", "FALSE", "No"}) {
        EXPECT_FALSE(flagOf(parsed({"--encrypt-video", word}), "encrypt-video")) << word;
    }
    for (const char* word : {"yes", "on", "1", "true", "TRUE", ""}) {
        EXPECT_TRUE(flagOf(parsed({"--encrypt-video", word}), "encrypt-video")) << word;
    }
}

TEST(PackagerOptionsTest, AnEmptyWordIsAnEmptyText) {
    EXPECT_EQ(textOf(parsed({"--output-path", ""}), "output-path"), "");
}

TEST(PackagerOptionsTest, AValueIsTakenWhateverItLooksLike) {
    const OptionMap options = parsed({"--input-file", "--help"});
    EXPECT_EQ(textOf(options, "input-file"), "--help");
    EXPECT_FALSE(flagOf(options, "help"));
}

TEST(PackagerOptionsTest, AnUnambiguousBeginningOfAKeyIsEnough) {
    EXPECT_TRUE(flagOf(parsed({"--hel"}), "help"));
    EXPECT_EQ(numberOf(parsed({"--frame-r", "5"}), "frame-rate"), 5.0);
}

TEST(PackagerOptionsTest, ABadCommandLineIsToldTheUsageAlone) {
    const std::vector<std::vector<std::string>> commandLines = {
        {"--no-such-option"},
        {"--fragment-duration=abc"},
        {"--fragment-duration=4 "},
        {"--fragment-duration=0x10"},
        {"--fragment-duration=4,5"},
        {"--fragment-duration="},
        {"--fragment-duration"},
        {"--fragment-duration=1", "--fragment-duration=2"},
        {"--help", "--help"},
        {"--help=true"},
        {"--encrypt-audio=maybe"},
        {"--in=a"},
        {"-h"},
        {"stray"},
    };
    for (const auto& arguments : commandLines) {
        try {
            parsed(arguments);
            ADD_FAILURE() << arguments.front();
        } catch (const OfflineException& failure) {
            EXPECT_EQ(failure.code(), 9) << arguments.front();
            EXPECT_EQ(failure.text(),
                      "Usage: KZSpackager --input-file=<file> --[setting]=[arg]...");
        }
    }
}

TEST(PackagerOptionsTest, TheFileStandsBetweenDefaultAndCommandLine) {
    const TempDir folder;
    const std::string file = folder.write("c.xml", text("<any>"
                                                        "<bitrate>100</bitrate>"
                                                        "<fragment-duration>2</fragment-duration>"
                                                        "<encrypt-audio>false</encrypt-audio>"
                                                        "<content-id>from file</content-id>"
                                                        "<edit-list>true</edit-list>"
                                                        "<unknown>x</unknown>"
                                                        "</any>"));
    const OptionMap options =
        parsed({"--conf-file", file, "--fragment-duration=3", "--content-id=from line"});
    EXPECT_EQ(numberOf(options, "bitrate"), 100.0);
    EXPECT_EQ(numberOf(options, "fragment-duration"), 3.0);
    EXPECT_EQ(numberOf(options, "duration-precision"), 0.1);
    EXPECT_FALSE(flagOf(options, "encrypt-audio"));
    EXPECT_EQ(textOf(options, "content-id"), "from line");
    EXPECT_TRUE(flagOf(options, "edit-list"));
}

TEST(PackagerOptionsTest, OnlyTheFirstOfTwoEqualElementsAndOnlyDirectChildrenCount) {
    const TempDir folder;
    const std::string file =
        folder.write("c.xml", text("<r><deep><bitrate>9</bitrate></deep><bitrate>1</bitrate>"
                                   "<bitrate>2</bitrate><conf-file>other.xml</conf-file></r>"));
    const OptionMap options = parsed({"--conf-file", file});
    EXPECT_EQ(numberOf(options, "bitrate"), 1.0);
    // The command line wins over what the file says of itself.
    EXPECT_EQ(textOf(options, "conf-file"), file);
}

TEST(PackagerOptionsTest, AnEmptyElementIsTheDefault) {
    const TempDir folder;
    const std::string file =
        folder.write("c.xml", text("<r><fragment-duration></fragment-duration>"
                                   "<output-path/><encrypt-audio>yes</encrypt-audio></r>"));
    const OptionMap options = parsed({"--conf-file", file});
    EXPECT_EQ(numberOf(options, "fragment-duration"), 4.0);
    EXPECT_EQ(textOf(options, "output-path"), ".");
    EXPECT_TRUE(flagOf(options, "encrypt-audio"));
}

TEST(PackagerOptionsTest, AFileThatCanNotBeOpenedCountsAsEmpty) {
    const TempDir folder;
    const std::string file = folder.makeSocket("c.xml");
    const OptionMap options = parsed({"--conf-file", file, "--bitrate=5"});
    EXPECT_EQ(numberOf(options, "bitrate"), 5.0);
    EXPECT_EQ(numberOf(options, "fragment-duration"), 4.0);
    EXPECT_EQ(textOf(options, "output-path"), ".");
    EXPECT_FALSE(flagOf(options, "help"));
}

TEST(PackagerOptionsTest, TheHelpTextIsFramedAndWrapped) {
    PackagerOptions options;
    options.parse({});
    const std::string& help = options.helpText();
    EXPECT_EQ(help.rfind("\nKZSpackager version 5,0,16,5016 - "
                         "Tool to fragment content into kzs data.\n",
                         0),
              0U);
    EXPECT_NE(help.find("\n\nUsage: kzspackager --input-file=<file> --[setting]=[arg]...\n"
                        "Allowed options:\n"),
              std::string::npos);
    EXPECT_EQ(help.substr(help.size() - 2), "\n\n");
    std::size_t longest = 0;
    for (std::size_t at = 0, end = 0; at < help.size(); at = end + 1) {
        end = help.find('\n', at);
        longest = std::max(longest, end - at);
    }
    EXPECT_LE(longest, 80U);
    EXPECT_GT(longest, 70U);
}

TEST(PackagerOptionsTest, TheHelpListingKeepsItsSpellings) {
    PackagerOptions options;
    options.parse({});
    const std::string& help = options.helpText();
    for (const char* piece : {"Specfies", "doesn\x92t", "they\x92re", "packager's",
                              "--encrypt-audio arg", "Print Varnholt kzs packager version"}) {
        EXPECT_NE(help.find(piece), std::string::npos) << piece;
    }
    // A listing wraps at blanks, so look at the option as it is described.
    boost::program_options::options_description description;
    for (const auto& [key, type] : options.table()) type->addToDescription(description, key);
    EXPECT_EQ(description.find("video-encrypt-level", false).description(),
              "The level of encryption for the content.  Possible values are 0 (low),1 (medium), "
              "and 2 (high).");
    EXPECT_EQ(description.find("output-manifest-file", false).description(),
              "The name of the output manifest file. Use this option to generate output files "
              "with a custom name");
    EXPECT_EQ(description.find("edit-list", false).description(),
              "Use edit-list in the input file to package the file into kzs");
    EXPECT_EQ(description.find("sample-dump", false).description(),
              "Dumps the samples and the fragments they\x92re set to. This option does not "
              "fragment the file.");
    EXPECT_EQ(description.find("bitrate", false).description(),
              "Specfies the bitrate of the content to fragment and adds it to the manifest file.");
}

TEST(PackagerOptionsTest, TheVersionTextIsOneLineBetweenLineEnds) {
    PackagerOptions options;
    options.parse({});
    EXPECT_EQ(options.versionText(), "\nKZSpackager version 5,0,16,5016\n");
}

}  // namespace
}  // namespace torvo::offline
