#include "cli/PackageFixture.h"

namespace kz::test {
namespace {

class PackageCliTest : public PackageFixture {};

TEST_F(PackageCliTest, AnFlvFileBecomesASegmentAnIndexAndAManifest) {
    folder.write("clip.flv", avClip(10000, 2000));
    expectPackaged();
    EXPECT_EQ(outputs(), (std::vector<std::string>{"clip.kzd", "clipSeg1.kzs", "clipSeg1.kzx"}));
    const Presentation presentation = read();
    ASSERT_EQ(presentation.segments.size(), 1U);
    EXPECT_EQ(presentation.segments[0].fragments.size(), 3U);
    ASSERT_EQ(presentation.indexes.size(), 1U);
    ASSERT_EQ(presentation.indexes[0].global.size(), 3U);
    EXPECT_EQ(presentation.indexes[0].global[2].time, 8000U);
    EXPECT_EQ(presentation.indexes[0].bits, 0xE0);
}

TEST_F(PackageCliTest, SegmentsRollOnceMoreThanTheirDurationIsWritten) {
    folder.write("clip.flv", avClip(18000, 2000));
    // Fragments of 4, 4, 4, 4 and 2 seconds: 12 is the first sum above 10.
    expectPackaged({"--segment-duration=10"});
    const Presentation presentation = read();
    ASSERT_EQ(presentation.segments.size(), 2U);
    EXPECT_EQ(presentation.segments[0].fragments.size(), 3U);
    EXPECT_EQ(presentation.segments[1].fragments.size(), 2U);
    ASSERT_EQ(presentation.indexes.size(), 2U);
    EXPECT_EQ(presentation.indexes[0].global.size(), 3U);
    EXPECT_EQ(presentation.indexes[1].global.size(), 5U);
    EXPECT_EQ(presentation.indexes[1].global[2].segment, 1U);
    EXPECT_EQ(presentation.indexes[1].global[3].segment, 2U);
}

TEST_F(PackageCliTest, AsMuchAsTheSegmentDurationIsNotMore) {
    folder.write("clip.flv", avClip(18000, 2000));
    expectPackaged({"--segment-duration=8"});
    const Presentation presentation = read();
    ASSERT_GE(presentation.segments.size(), 1U);
    EXPECT_EQ(presentation.segments[0].fragments.size(), 3U);
}

TEST_F(PackageCliTest, ALastFragmentThatRollsLeavesAnEmptySegmentWithTheWholeIndex) {
    folder.write("clip.flv", avClip(8000, 2000));
    expectPackaged({"--segment-duration=7"});
    const Presentation presentation = read();
    ASSERT_EQ(presentation.segments.size(), 2U);
    EXPECT_EQ(presentation.segments[0].fragments.size(), 2U);
    EXPECT_EQ(presentation.segments[1].fragments.size(), 0U);
    ASSERT_EQ(presentation.indexes.size(), 2U);
    EXPECT_EQ(presentation.indexes[1].global.size(), 2U);
}

TEST_F(PackageCliTest, EachFragmentLongerThanASegmentHasAFileOfItsOwn) {
    folder.write("clip.flv", avClip(9000, 3000));
    expectPackaged({"--segment-duration=1", "--fragment-duration=3"});
    EXPECT_EQ(read().segments.size(), 4U);
}

TEST_F(PackageCliTest, SamplesAfterAStretchWithoutKeyFramesAreAllThere) {
    folder.write("clip.flv", avClip(25000, 9000));
    expectPackaged();
    const Presentation presentation = read();
    // Every tag once, and each of the three key frames has both headers in front of it.
    EXPECT_EQ(tagImages(presentation).size(), 2U + 2U * 625U);
    ASSERT_EQ(presentation.indexes.size(), 1U);
    bool hasGap = false;
    for (const IndexRow& row : presentation.indexes[0].global) {
        hasGap = hasGap || row.afraOffset == kNoData;
    }
    EXPECT_TRUE(hasGap);
}

TEST_F(PackageCliTest, WhatFollowsTheLastCutAtItsTimeIsLostWhereTheDurationRoundsBelowIt) {
    // 1.001 x 1000.0 is 1000.9999999999999, so the sample at 1001 ms lies past the duration; and
    // as it ends a fragment, too, it is the last. 2.0 x 1000.0 is no less than 2000.
    for (const std::uint32_t endMs : {1001U, 2000U}) {
        folder.write("clip.flv", flvFile({avcConfig(0), aacConfig(0), avcFrame(0, true, raw({1})),
                                          aacFrame(0, raw({2})), avcFrame(endMs, true, raw({3})),
                                          aacFrame(endMs, raw({4}))}));
        expectPackaged({"--fragment-duration=" + std::to_string(endMs / 1000)});
        const Presentation presentation = read();
        EXPECT_EQ(presentation.segments.at(0).fragments.size(), 2U) << endMs;
        EXPECT_EQ(tagImages(presentation).size(), endMs == 1001 ? 5U : 6U);
    }
}

TEST_F(PackageCliTest, AnOutputNameReplacesTheInputsAndItsFoldersDoNotCount) {
    folder.write("clip.flv", avClip(5000, 1000));
    expectPackaged({"--output-manifest-file=sub/dir/name.xyz"});
    EXPECT_EQ(outputs(), (std::vector<std::string>{"name.kzd", "nameSeg1.kzs", "nameSeg1.kzx"}));
    EXPECT_EQ(countOf(manifest("name.kzd"), "streamId=\"name\""), 1U);
}

TEST_F(PackageCliTest, TheStreamAndItsUrlAreBothTheBaseName) {
    folder.write("clip.flv", avClip(1000, 1000));
    expectPackaged();
    EXPECT_EQ(countOf(manifest(), "streamId=\"clip\""), 1U);
    EXPECT_EQ(countOf(manifest(), "url=\"clip\""), 1U);
}

TEST_F(PackageCliTest, OnlyTheLastExtensionGoes) {
    folder.write("movie.part1.flv", avClip(1000, 1000));
    const ProcessResult result =
        packagerIn(folder.path(), {"--input-file=movie.part1.flv", "--output-path=out/deep/er"});
    EXPECT_EQ(result.status, 0);
    EXPECT_TRUE(fileExists(folder / "out/deep/er/movie.part1.kzd"));
    EXPECT_TRUE(fileExists(folder / "out/deep/er/movie.part1Seg1.kzs"));
}

TEST_F(PackageCliTest, TheCurrentFolderIsTheDefaultOutput) {
    folder.write("clip.flv", avClip(1000, 1000));
    EXPECT_EQ(packagerIn(folder.path(), {"--input-file=clip.flv"}).status, 0);
    EXPECT_TRUE(fileExists(folder / "clipSeg1.kzx"));
}

TEST_F(PackageCliTest, AnExternalBootstrapIsWrittenAndNamed) {
    folder.write("clip.flv", avClip(9000, 1000));
    expectPackaged({"--external-bootstrap"});
    EXPECT_EQ(outputs(), (std::vector<std::string>{"clip.bootstrap", "clip.kzd", "clipSeg1.kzs",
                                                   "clipSeg1.kzx"}));
    EXPECT_EQ(countOf(manifest(), "url=\"clip.bootstrap\""), 1U);
    const Abst bootstrap = readAbstBox(readFile(folder / "out/clip.bootstrap"));
    EXPECT_EQ(bootstrap.segments.size(), 1U);
    ASSERT_FALSE(bootstrap.fragments.empty());
    EXPECT_EQ(bootstrap.fragments.back().discontinuity, 0);
}

TEST_F(PackageCliTest, ABitrateOfZeroIsLeftOut) {
    folder.write("clip.flv", avClip(1000, 1000));
    expectPackaged();
    EXPECT_EQ(countOf(manifest(), "bitrate="), 0U);
    expectPackaged({"--bitrate=1500"});
    EXPECT_EQ(countOf(manifest(), "bitrate=\"1500\""), 1U);
}

TEST_F(PackageCliTest, ASecondRunMergesItsRenditionIntoTheManifest) {
    folder.write("clip.flv", avClip(5000, 1000));
    expectPackaged({"--bitrate=100", "--output-manifest-file=low"});
    expectPackaged({"--bitrate=200", "--output-manifest-file=high", "--manifest-file=out/low.kzd"});
    const std::string merged = manifest("high.kzd");
    EXPECT_EQ(countOf(merged, "streamId=\"low\""), 1U);
    EXPECT_EQ(countOf(merged, "streamId=\"high\""), 1U);
    EXPECT_EQ(countOf(merged, "bitrate=\"100\""), 1U);
    EXPECT_EQ(countOf(merged, "bitrate=\"200\""), 1U);
}

TEST_F(PackageCliTest, TheManifestMayBeReadAndWrittenInPlace) {
    folder.write("clip.flv", avClip(5000, 1000));
    expectPackaged();
    expectPackaged({"--manifest-file=out/clip.kzd"});
    // The old element stays beside the new one.
    EXPECT_EQ(countOf(manifest(), "streamId=\"clip\""), 2U);
}

TEST_F(PackageCliTest, AContentIdAloneIsAPlainRunThatNamesTheContent) {
    folder.write("clip.flv", avClip(1000, 1000));
    expectPackaged({"--content-id=the content"});
    EXPECT_EQ(countOf(manifest(), "drmContentId=\"the content\""), 1U);
    EXPECT_FALSE(fileExists(folder / "out/drmmetadata.bin"));
}

TEST_F(PackageCliTest, FilesOfAnEarlierRunAreOverwrittenOrStay) {
    folder.write("clip.flv", avClip(18000, 2000));
    expectPackaged({"--segment-duration=3"});
    const std::size_t before = outputs().size();
    const Bytes fourth = readFile(folder / "out/clipSeg4.kzs");
    folder.write("clip.flv", avClip(5000, 1000));
    expectPackaged();
    EXPECT_EQ(outputs().size(), before);
    EXPECT_EQ(readFile(folder / "out/clipSeg4.kzs"), fourth);
    EXPECT_EQ(readSegment(readFile(folder / "out/clipSeg1.kzs")).fragments.size(), 2U);
}

TEST_F(PackageCliTest, AnAudioFileIsCutOnTheGrid) {
    folder.write("clip.flv", audioClip(9000));
    expectPackaged();
    const Presentation presentation = read();
    ASSERT_EQ(presentation.indexes.size(), 1U);
    ASSERT_EQ(presentation.indexes[0].global.size(), 3U);
    // The last message of an input without video is left out.
    EXPECT_EQ(tagImages(presentation).size(), 90U);
}

TEST_F(PackageCliTest, AnAudioFileWhoseLastSampleOpensACellHasAFragmentWithoutBytes) {
    folder.write("clip.flv", audioClip(8000));
    expectPackaged();
    const Presentation presentation = read();
    EXPECT_EQ(presentation.segments[0].fragments.size(), 2U);
    ASSERT_EQ(presentation.indexes[0].global.size(), 3U);
    EXPECT_EQ(presentation.indexes[0].global[2].fragment, 3U);
}

TEST_F(PackageCliTest, ALateStartBeginsTheIndexAtItsOwnNumber) {
    std::vector<FlvTag> tags = {avcConfig(20000)};
    for (std::uint32_t ms = 20000; ms < 30000; ms += 40) {
        tags.push_back(avcFrame(ms, ms % 2000 == 0, pattern(20, ms)));
    }
    folder.write("clip.flv", flvFile(tags, 1));
    expectPackaged();
    const Presentation presentation = read();
    ASSERT_FALSE(presentation.indexes.empty());
    EXPECT_EQ(presentation.indexes[0].global.front().fragment, 6U);
}

TEST_F(PackageCliTest, TwoRunsGiveTheSameBytesButForDatesAndIds) {
    folder.write("clip.flv", avClip(9000, 1000));
    ProcessSettings settings;
    settings.workingDirectory = folder.path();
    settings.environment = {{"SOURCE_DATE_EPOCH", "1700000000"}};
    for (const char* out : {"--output-path=out", "--output-path=again"}) {
        EXPECT_EQ(packager({"--input-file=clip.flv", out}, settings).status, 0);
    }
    for (const char* name : {"clipSeg1.kzs", "clipSeg1.kzx"}) {
        EXPECT_EQ(readFile(folder / (std::string("out/") + name)),
                  readFile(folder / (std::string("again/") + name)));
    }
}

}  // namespace
}  // namespace kz::test
