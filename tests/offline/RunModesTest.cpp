#include <sstream>

#include <gtest/gtest.h>

#include "kzs/BootstrapInfo.h"
#include "kzs/BootstrapWriter.h"
#include "offline/OfflineException.h"
#include "offline/OptionFixture.h"
#include "offline/RunModes.h"
#include "support/TempDir.h"

namespace torvo::offline {
namespace {

/// What is printed; "none" when no mode ran.
std::string printed(const OptionMap& replaced) {
    std::ostringstream out;
    return runModes(defaultsWith(replaced), "H\n", "V\n", out) ? out.str() : "none";
}

const boost::any kOn = true;
const boost::any kInput = std::string("a.flv");

TEST(RunModesTest, HelpBeatsVersionAndBothBeatAllElse) {
    EXPECT_EQ(printed({{"help", kOn}, {"version", kOn}, {"config-dump", kOn}}), "H\n\n");
    EXPECT_EQ(printed({{"version", kOn}, {"config-dump", kOn}}), "V\n\n");
}

TEST(RunModesTest, OtherModesNeedAnInputFirst) {
    EXPECT_THROW(printed({}), InputFileNotGivenException);
    EXPECT_THROW(printed({{"config-dump", kOn}}), InputFileNotGivenException);
}

TEST(RunModesTest, AnUpdateNeedsNoInput) {
    EXPECT_EQ(printed({{"update-drm-info", kOn}}), "none");
    EXPECT_NE(printed({{"update-drm-info", kOn}, {"config-dump", kOn}}), "none");
}

TEST(RunModesTest, WithoutAModeNothingRuns) {
    EXPECT_EQ(printed({{"input-file", kInput}}), "none");
}

TEST(RunModesTest, TheSettingsComeBeforeTheSamples) {
    const std::string text =
        printed({{"input-file", kInput}, {"config-dump", kOn}, {"sample-dump", kOn}});
    EXPECT_EQ(text.rfind("allowed-drift : 1\nbitrate : 0\ncommon-key : \n", 0), 0U);
}

TEST(RunModesTest, TheDumpShowsNumbersAndTextsInKeyOrder) {
    EXPECT_EQ(printed({{"input-file", kInput},
                       {"config-dump", kOn},
                       {"bitrate", 1500000.0},
                       {"content-id", std::string("50%")}}),
              "allowed-drift : 1\n"
              "bitrate : 1.5e+06\n"
              "common-key : \n"
              "conf-file : \n"
              "content-id : 50%\n"
              "credential-pwd : \n"
              "duration-precision : 0.1\n"
              "fragment-duration : 4\n"
              "frame-precision : 1\n"
              "frame-rate : 0\n"
              "frames-per-keyframe-interval : 0\n"
              "input-file : a.flv\n"
              "keyframe-intervals-per-fragment : 1\n"
              "license-server-cert : \n"
              "license-server-url : \n"
              "manifest-file : \n"
              "ms-unencrypted : 0\n"
              "output-manifest-file : \n"
              "output-path : .\n"
              "packager-credential : \n"
              "policy-file : \n"
              "segment-duration : 0\n"
              "transport-cert : \n"
              "video-encrypt-level : 2\n");
}

TEST(RunModesTest, SamplesComeBeforeFragmentsAndThoseBeforeBootstrapAndIndex) {
    const kz::test::TempDir folder;
    const auto box = kzs::serialiseBootstrap(kzs::BootstrapInfo(), /*bodyOnly=*/false);
    const std::string file = folder.write("a.bootstrap", kz::test::bytesOf(box.data(), box.size()));
    OptionMap modes = {{"input-file", file},
                       {"inspect-index", kOn},
                       {"inspect-bootstrap", kOn},
                       {"inspect-fragments", kOn},
                       {"sample-dump", kOn}};
    // A bootstrap is no movie, has no fragments, and is no index.
    EXPECT_THROW(printed(modes), InvalidInputFileException);
    modes.erase("sample-dump");
    EXPECT_EQ(printed(modes), "");
    modes.erase("inspect-fragments");
    EXPECT_NE(printed(modes), "");
    modes.erase("inspect-bootstrap");
    EXPECT_THROW(printed(modes), StdErrorException);
}

/// Takes nothing.
class FullBuffer : public std::streambuf {};

TEST(RunModesTest, OutputThatCanNotBeWrittenFailsTheMode) {
    FullBuffer full;
    std::ostream out(&full);
    try {
        runModes(defaultsWith({{"help", kOn}}), "H", "V", out);
        FAIL();
    } catch (const OfflineException& failure) {
        EXPECT_EQ(failure.code(), 12);
    }
}

}  // namespace
}  // namespace torvo::offline
