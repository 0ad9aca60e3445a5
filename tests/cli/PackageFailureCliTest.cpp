#include <chrono>
#include <filesystem>
#include <sys/stat.h>

#include "cli/PackageFixture.h"

namespace kz::test {
namespace {

class PackageFailureCliTest : public PackageFixture {};

TEST_F(PackageFailureCliTest, AMissingInputIsToldOnceTheOutputPathIsMade) {
    expectFailure(package(), 1, "Error 1: clip.flv file does not exist");
    EXPECT_TRUE(std::filesystem::is_directory(folder / "out"));
}

TEST_F(PackageFailureCliTest, AFolderAsInputIsToldBeforeTheOutputPathIsMade) {
    std::filesystem::create_directory(folder / "clip.flv");
    expectFailure(package(), 1, "Error 1: Path is not a file clip.flv");
    EXPECT_FALSE(fileExists(folder / "out"));
}

TEST_F(PackageFailureCliTest, AFifoAsInputIsToldAndNotWaitedFor) {
    ASSERT_EQ(mkfifo((folder / "clip.flv").c_str(), 0600), 0);
    ProcessSettings settings;
    settings.timeout = std::chrono::seconds(10);
    settings.workingDirectory = folder.path();
    expectFailure(packager({"--input-file=clip.flv", "--output-path=out"}, settings), 1,
                  "Error 1: Path is not a file clip.flv");
    EXPECT_FALSE(fileExists(folder / "out"));
    expectFailure(packager({"--input-file=clip.flv", "--sample-dump"}, settings), 1,
                  "Error 1: Path is not a file clip.flv");
}

TEST_F(PackageFailureCliTest, AFileOfNeitherFormatIsInvalid) {
    for (const Bytes& content : {Bytes(), text("FLV"), text("no media at all"), fill(5000, 0)}) {
        folder.write("clip.flv", content);
        expectFailure(package(), 3, "Error 3: invalid input file ");
    }
}

TEST_F(PackageFailureCliTest, BadTimingIsToldBehindAMissingInput) {
    expectFailure(package({"--fragment-duration=0"}), 1, "Error 1: clip.flv file does not exist");
    folder.write("clip.flv", avClip(1000, 1000));
    expectFailure(package({"--fragment-duration=0"}), 12,
                  "Error 12: Standard Exception: invalid fragment duration specified");
    expectFailure(package({"--frame-rate=25"}), 12,
                  "Error 12: Standard Exception: no value specified for "
                  "frames-per-keyframe-interval");
    EXPECT_FALSE(fileExists(folder / "out/clipSeg1.kzs"));
}

TEST_F(PackageFailureCliTest, ABadManifestIsToldBeforeAnythingIsWritten) {
    folder.write("clip.flv", avClip(1000, 1000));
    folder.write("broken.kzd", text("<manifest>"));
    expectFailure(package({"--manifest-file=none.kzd"}), 1,
                  "Error 1: none.kzd file does not exist");
    expectFailure(package({"--manifest-file=."}), 1, "Error 1: Path is not a file .");
    expectFailure(package({"--manifest-file=broken.kzd"}), 3,
                  "Error 3: invalid input file broken.kzd");
    EXPECT_FALSE(fileExists(folder / "out/clipSeg1.kzs"));
}

TEST_F(PackageFailureCliTest, AnOutputPathThatIsAFileCanNotBeUsed) {
    folder.write("clip.flv", avClip(1000, 1000));
    folder.write("out", text("x"));
    expectFailure(package(), 4, "Error 4: cannot access input file ");
    expectFailure(packagerIn(folder.path(), {"--input-file=clip.flv", "--output-path="}), 9,
                  "Error 9: Usage: KZSpackager --input-file=<file> --[setting]=[arg]...");
    expectFailure(packagerIn(folder.path(), {"--input-file=clip.flv", "--output-path", ""}), 4,
                  "Error 4: cannot access input file ");
}

TEST_F(PackageFailureCliTest, AFolderInThePlaceOfASegmentIsAnInternalFailure) {
    folder.write("clip.flv", avClip(1000, 1000));
    std::filesystem::create_directories(folder / "out/clipSeg1.kzs");
    // The box library has no number of its own for it. A status has eight bits: 999 is 231.
    expectFailure(package(), 231, "Error 999: Offline packager has failed internally");
}

TEST_F(PackageFailureCliTest, TimesThatGoBackAreAnInternalFailure) {
    std::vector<FlvTag> tags = {avcConfig(0)};
    for (const std::uint32_t ms : {0U, 40U, 80U, 60U, 120U}) {
        tags.push_back(avcFrame(ms, ms == 0, pattern(20, ms)));
    }
    folder.write("clip.flv", flvFile(tags, 1));
    expectFailure(package(), 231, "Error 999: Offline packager has failed internally");
}

TEST_F(PackageFailureCliTest, AFolderInThePlaceOfAnIndexOrAManifestIsAStandardFailure) {
    folder.write("clip.flv", avClip(1000, 1000));
    for (const char* name : {"out/clipSeg1.kzx", "out/clip.kzd", "out/clip.bootstrap"}) {
        std::filesystem::remove_all(folder / "out");
        std::filesystem::create_directories(folder / name);
        const ProcessResult result = package({"--external-bootstrap"});
        EXPECT_EQ(result.status, 12) << name;
        EXPECT_EQ(result.err.rfind("Error 12: Standard Exception: ", 0), 0U) << name;
    }
}

TEST_F(PackageFailureCliTest, ASegmentNeverOverwritesItsInput) {
    const std::string input = folder.write("aSeg1.kzs", avClip(1000, 1000));
    const ProcessResult result =
        packagerIn(folder.path(), {"--input-file=aSeg1.kzs", "--output-manifest-file=a"});
    expectFailure(result, 4, "Error 4: cannot access input file ./aSeg1.kzs");
    EXPECT_EQ(readFile(input), avClip(1000, 1000));
}

TEST_F(PackageFailureCliTest, AFullDiskInASegmentIsAWriterFailure) {
    folder.write("clip.flv", avClip(20000, 2000));
    ProcessSettings settings;
    settings.workingDirectory = folder.path();
    settings.fileSizeLimit = 130000;
    const ProcessResult result = packager({"--input-file=clip.flv", "--output-path=out"}, settings);
    expectFailure(result, 7, "Error 7: KZS writer failed");
    EXPECT_FALSE(fileExists(folder / "out/clip.kzd"));
}

TEST_F(PackageFailureCliTest, NamesThatXmlCanNotHoldAreRefusedBeforeAnyWork) {
    folder.write("clip.flv", avClip(1000, 1000));
    for (const char* name : {"a\x01", "a\xff"}) {
        const ProcessResult result = package({std::string("--output-manifest-file=") + name});
        EXPECT_EQ(result.status, 12);
        EXPECT_FALSE(fileExists(folder / "out"));
    }
    EXPECT_EQ(package({"--content-id=\xc3"}).status, 12);
}

TEST_F(PackageFailureCliTest, NamesWithMarkupOrPercentSignsComeBackAsTheyAre) {
    folder.write("clip.flv", avClip(5000, 1000));
    const std::string name = "a&b<c>%1%\"d'";
    expectPackaged({"--output-manifest-file=" + name + ".x"});
    EXPECT_TRUE(fileExists(folder / ("out/" + name + "Seg1.kzs")));
    expectPackaged({"--output-manifest-file=second", "--manifest-file=out/" + name + ".kzd"});
    EXPECT_EQ(countOf(manifest("second.kzd"), "streamId=\"a&amp;b&lt;c"), 1U);
}

TEST_F(PackageFailureCliTest, SoundWithoutADescriptionIsAnInternalFailure) {
    // Sound is described by its first tag behind the first picture, and here is none.
    std::vector<FlvTag> tags = {mp3Frame(0, pattern(9, 0)), mp3Frame(100, pattern(9, 1)),
                                avcConfig(200)};
    for (std::uint32_t ms = 200; ms < 1000; ms += 40) {
        tags.push_back(avcFrame(ms, ms == 200, pattern(20, ms)));
    }
    folder.write("clip.flv", flvFile(tags));
    expectFailure(package(), 231, "Error 999: Offline packager has failed internally");
    EXPECT_FALSE(fileExists(folder / "out/clip.kzd"));
}

TEST_F(PackageFailureCliTest, AFileWithoutTracksIsRefused) {
    folder.write("clip.flv", flvFile({onMetaDataTag(320, 180)}, 5));
    expectFailure(package(), 6,
                  "Error 6: Input file does not contain any supported tracks: clip.flv");
}

TEST_F(PackageFailureCliTest, DamagedTagsAreToldByTheFlvLibrary) {
    const Bytes whole = avClip(6000, 1000);
    folder.write("clip.flv", whole.cutTo(whole.size() - 20));
    expectFailure(package(), 11,
                  "Error 11: Error when reading the FLV A TCMessage has corrupt data.");
    EXPECT_FALSE(fileExists(folder / "out/clip.kzd"));
}

TEST_F(PackageFailureCliTest, AnFlvWithoutATagIsAFailureWithoutText) {
    folder.write("clip.flv", flvFile({}));
    expectFailure(package(), 14, "Error 14: Error when reading the FLV ");
}

TEST_F(PackageFailureCliTest, SamplesWithoutDataLeaveAnEmptyPresentation) {
    folder.write("clip.flv", flvFile({flvTag(9, 0, Bytes()), flvTag(9, 40, Bytes())}, 1));
    expectPackaged();
    EXPECT_TRUE(fileExists(folder / "out/clip.kzd"));
    EXPECT_TRUE(fileExists(folder / "out/clipSeg1.kzx"));
}

TEST_F(PackageFailureCliTest, NoOutputOverwritesItsInputUnderAnotherName) {
    const Bytes clip = avClip(1000, 1000);
    folder.write("clip.flv", clip);
    std::filesystem::create_directory(folder / "out");
    for (const char* name : {"clip.kzd", "clip.bootstrap", "clipSeg1.kzx", "clipSeg1.kzs"}) {
        SCOPED_TRACE(name);
        std::filesystem::create_symlink("../clip.flv", folder / (std::string("out/") + name));
        expectFailure(package({"--external-bootstrap"}), 4,
                      std::string("Error 4: cannot access input file out/") + name);
        EXPECT_EQ(readFile(folder / "clip.flv"), clip);
        std::filesystem::remove(folder / (std::string("out/") + name));
    }
}

TEST_F(PackageFailureCliTest, AnInputThatCanNotBeReadIsAFailure) {
    folder.makeSocket("clip.flv");
    expectFailure(package(), 14, "Error 14: Error when reading the FLV ");
}

TEST_F(PackageFailureCliTest, APathBeyondAllLimitsIsALackOfAccess) {
    const ProcessResult result =
        packagerIn(folder.path(), {"--input-file=" + std::string(5000, 'x'), "--output-path=out"});
    expectFailure(result, 4, "Error 4: cannot access input file ");
}

TEST_F(PackageFailureCliTest, LeapsInTimeDoNotFillMemory) {
    std::vector<FlvTag> tags = {avcConfig(0)};
    for (const std::uint32_t ms : {0U, 1000U, 2000U, 2000000000U, 2000000500U, 2000001000U}) {
        tags.push_back(avcFrame(ms, true, pattern(20, ms)));
    }
    folder.write("clip.flv", flvFile(tags, 1));
    expectFailure(package({"--fragment-duration=0.001"}), 12,
                  "Error 12: Standard Exception: too many fragment numbers without data");
}

}  // namespace
}  // namespace kz::test
