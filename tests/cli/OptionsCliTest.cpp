#include <gtest/gtest.h>

#include "cli/CommandLine.h"
#include "support/TempDir.h"

namespace kz::test {
namespace {

const char* const kUsage = "Error 9: Usage: KZSpackager --input-file=<file> --[setting]=[arg]...\n";
const char* const kVersion = "\nKZSpackager version 5,0,16,5016\n\n";

void expectFailure(const ProcessResult& result, int status, const std::string& line) {
    EXPECT_EQ(result.status, status);
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.err, line);
}

bool hasLine(const std::string& text, const std::string& line) {
    return ("\n" + text).find("\n" + line + "\n") != std::string::npos;
}

TEST(OptionsCliTest, NoArgumentsAtAllIsAMissingInput) {
    const TempDir folder;
    expectFailure(packagerIn(folder.path(), {}), 2, "Error 2: no input file given\n");
}

TEST(OptionsCliTest, ConfigDumpAloneIsAMissingInput) {
    const TempDir folder;
    expectFailure(packagerIn(folder.path(), {"--config-dump"}), 2,
                  "Error 2: no input file given\n");
}

TEST(OptionsCliTest, HelpWinsOverEveryOtherMode) {
    const TempDir folder;
    const ProcessResult result =
        packagerIn(folder.path(), {"--config-dump", "--version", "--input-file=a.flv", "--help"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(result.out.rfind("\nKZSpackager version 5,0,16,5016 - ", 0), 0U);
    EXPECT_NE(result.out.find("Allowed options:"), std::string::npos);
    EXPECT_NE(result.out.find("doesn\x92t"), std::string::npos);
}

TEST(OptionsCliTest, VersionIsPrintedBetweenEmptyLines) {
    const TempDir folder;
    const ProcessResult result = packagerIn(folder.path(), {"--version"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.out, kVersion);
}

TEST(OptionsCliTest, AnUnknownOptionStopsEvenHelp) {
    const TempDir folder;
    expectFailure(packagerIn(folder.path(), {"--help", "--no-such-option"}), 9, kUsage);
    expectFailure(packagerIn(folder.path(), {"--help", "stray"}), 9, kUsage);
}

TEST(OptionsCliTest, AMissingSettingsFileStopsEvenHelp) {
    const TempDir folder;
    expectFailure(packagerIn(folder.path(), {"--help", "--conf-file=none.xml"}), 1,
                  "Error 1: none.xml file does not exist\n");
}

TEST(OptionsCliTest, AnIncompleteProtectionSetStopsEvenHelp) {
    const TempDir folder;
    expectFailure(packagerIn(folder.path(), {"--help", "--common-key=k"}), 10,
                  "Error 10: Not enough information given for encryption: "
                  "no license server URL specified\n");
}

TEST(OptionsCliTest, ABadOptionIsToldBeforeABadFileAndThatBeforeABadSet) {
    const TempDir folder;
    EXPECT_EQ(packagerIn(folder.path(), {"--x", "--conf-file=none", "--common-key=k"}).status, 9);
    EXPECT_EQ(packagerIn(folder.path(), {"--conf-file=none", "--common-key=k"}).status, 1);
}

TEST(OptionsCliTest, AValueThatDoesNotConvertIsAnError) {
    const TempDir folder;
    expectFailure(packagerIn(folder.path(), {"--fragment-duration=abc"}), 9, kUsage);
}

TEST(OptionsCliTest, ASettingsFileNameBeyondAllLimitsIsAMissingFile) {
    const std::string name(5000, 'x');
    expectFailure(packager({"--conf-file=" + name}), 1,
                  "Error 1: " + name + " file does not exist\n");
}

TEST(OptionsCliTest, EachClassOfOptionComesFromDefaultFileOrCommandLine) {
    const TempDir folder;
    folder.write("c.xml", text("<settings>\n"
                               "  <bitrate> 250 </bitrate>\n"
                               "  <content-id>of the file</content-id>\n"
                               "  <fragment-duration>abc</fragment-duration>\n"
                               "  <segment-duration>9</segment-duration>\n"
                               "</settings>\n"));
    const ProcessResult result = packagerIn(
        folder.path(),
        {"--conf-file=c.xml", "--config-dump", "--input-file=a.flv", "--segment-duration=30"});
    EXPECT_EQ(result.status, 0);
    EXPECT_TRUE(hasLine(result.out, "bitrate : 250"));
    EXPECT_TRUE(hasLine(result.out, "content-id : of the file"));
    EXPECT_TRUE(hasLine(result.out, "fragment-duration : 4"));
    EXPECT_TRUE(hasLine(result.out, "segment-duration : 30"));
    EXPECT_TRUE(hasLine(result.out, "input-file : a.flv"));
    EXPECT_TRUE(hasLine(result.out, "output-path : ."));
    EXPECT_EQ(result.out.find("encrypt-audio"), std::string::npos);
    EXPECT_EQ(result.out.find("config-dump"), std::string::npos);
}

TEST(OptionsCliTest, TheDefaultSettingsFileIsReadFromTheCurrentFolder) {
    const TempDir folder;
    folder.write("kzspackager_config.xml", text("<c><help>true</help></c>"));
    const ProcessResult result = packagerIn(folder.path(), {"--input-file=a.flv"});
    EXPECT_EQ(result.status, 0);
    EXPECT_NE(result.out.find("Allowed options:"), std::string::npos);
}

TEST(OptionsCliTest, ASwitchOfTheSettingsFileCanNotBeTurnedOff) {
    const TempDir folder;
    folder.write("c.xml", text("<c><version>true</version></c>"));
    EXPECT_EQ(packagerIn(folder.path(), {"--conf-file=c.xml"}).out, kVersion);
    expectFailure(packagerIn(folder.path(), {"--conf-file=c.xml", "--version=false"}), 9, kUsage);
}

TEST(OptionsCliTest, ANamedSettingsFileStandsInForTheDefaultOne) {
    const TempDir folder;
    folder.write("kzspackager_config.xml", text("<c><help>true</help></c>"));
    folder.write("other.xml", text("<c/>"));
    expectFailure(packagerIn(folder.path(), {"--conf-file=other.xml"}), 2,
                  "Error 2: no input file given\n");
}

TEST(OptionsCliTest, ABrokenSettingsFileIsAnError) {
    const TempDir folder;
    folder.write("empty.xml", Bytes());
    folder.write("broken.xml", text("<a><b></a>"));
    const std::string line = "Error 8: XML Library failed Bad XML File\n";
    expectFailure(packagerIn(folder.path(), {"--conf-file=empty.xml"}), 8, line);
    expectFailure(packagerIn(folder.path(), {"--conf-file=broken.xml"}), 8, line);
    expectFailure(packagerIn(folder.path(), {"--conf-file=."}), 8, line);
}

TEST(OptionsCliTest, StandardOutputThatIsFullIsAFailure) {
    ProcessSettings settings;
    settings.standardOutputFile = "/dev/full";
    const ProcessResult result = packager({"--help"}, settings);
    EXPECT_EQ(result.status, 12);
    EXPECT_EQ(result.err.rfind("Error 12: Standard Exception: ", 0), 0U);
}

TEST(OptionsCliTest, APipeThatNobodyReadsIsAFailureAndNotASignal) {
    ProcessSettings settings;
    settings.breakStandardOutput = true;
    const ProcessResult result = packager({"--help"}, settings);
    EXPECT_EQ(result.signal, 0);
    EXPECT_EQ(result.status, 12);
}

TEST(OptionsCliTest, StandardOutputThatIsClosedIsAFailure) {
    ProcessSettings settings;
    settings.closeStandardOutput = true;
    EXPECT_EQ(packager({"--version"}, settings).status, 12);
}

TEST(OptionsCliTest, WithoutStandardErrorTheStatusAloneTells) {
    ProcessSettings settings;
    settings.closeStandardError = true;
    EXPECT_EQ(packager({"--no-such-option"}, settings).status, 9);
}

TEST(OptionsCliTest, NumbersDoNotDependOnTheLocale) {
    const TempDir folder;
    ProcessSettings settings;
    settings.workingDirectory = folder.path();
    settings.environment = {{"LC_ALL", "de_DE.UTF-8"}, {"LANG", "no_such_locale"}};
    const ProcessResult result =
        packager({"--config-dump", "--input-file=a", "--bitrate=1234567.5"}, settings);
    EXPECT_EQ(result.status, 0);
    EXPECT_TRUE(hasLine(result.out, "bitrate : 1.23457e+06"));
    EXPECT_TRUE(hasLine(result.out, "duration-precision : 0.1"));
}

}  // namespace
}  // namespace kz::test
