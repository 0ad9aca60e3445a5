#include <algorithm>
#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/FlvReader.h"
#include "support/Presentation.h"
#include "support/Process.h"
#include "support/TempDir.h"

namespace kz::test {
namespace {

std::string media(const std::string& name) {
    return std::string(KZ_TEST_DATA_DIR) + "/media/" + name + ".flv";
}

/// Packages a clip of the media folder and reads what came out. The run must say nothing.
Presentation package(const TempDir& out, const std::string& clip,
                     const std::vector<std::string>& options = {}) {
    std::vector<std::string> argv = {KZ_PACKAGER, "--input-file=" + media(clip),
                                     "--output-path=" + out.path(), "--external-bootstrap"};
    argv.insert(argv.end(), options.begin(), options.end());
    const ProcessResult result = run(argv);
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.err, "");
    return readPresentation(out.path(), clip);
}

bool hasVideo(const std::vector<StoredTag>& tags) {
    return std::any_of(tags.begin(), tags.end(),
                       [](const StoredTag& tag) { return tag.type == 9; });
}

/// The tags that must come out. A recording without video ends in front of its last time.
std::vector<Bytes> expectedImages(const std::string& clip) {
    const std::vector<StoredTag> tags = samplesInOrder(readFlvTags(readFile(media(clip))));
    std::vector<Bytes> images;
    for (const StoredTag& tag : tags) {
        if (hasVideo(tags) || tag.timeMs < tags.back().timeMs) images.push_back(tag.image);
    }
    return images;
}

std::string describe(const Presentation& presentation) {
    std::string lines;
    for (const std::string& line : inconsistencies(presentation)) lines += line + "\n";
    return lines;
}

class FlvMediaTest : public testing::TestWithParam<const char*> {};

TEST_P(FlvMediaTest, EveryTagComesOutOnceInOrderAndAllDescriptionsAgree) {
    const TempDir out;
    const Presentation presentation = package(out, GetParam());
    EXPECT_EQ(describe(presentation), "");
    const std::vector<Bytes> images = tagImages(presentation);
    const std::vector<Bytes> expected = expectedImages(GetParam());
    ASSERT_EQ(images.size(), expected.size());
    for (std::size_t i = 0; i < images.size(); ++i) {
        ASSERT_EQ(difference(images[i], expected[i]), "") << "tag " << i;
    }
}

TEST_P(FlvMediaTest, ShortFragmentsInManySegmentsHoldTheSameTags) {
    const TempDir out;
    const Presentation presentation =
        package(out, GetParam(), {"--fragment-duration=1", "--segment-duration=3"});
    EXPECT_EQ(describe(presentation), "");
    EXPECT_EQ(tagImages(presentation), expectedImages(GetParam()));
}

INSTANTIATE_TEST_SUITE_P(AllClips, FlvMediaTest,
                         testing::Values("aac_edge_12s", "aac_only", "audio_5min",
                                         "audio_late_500ms", "eos_11s", "eos_20s", "h263_mp3",
                                         "h264_aac_20s", "h264_aac_bframes", "h264_only",
                                         "long_gop_9s", "long_gop_9s_noaudio", "mbr_120k",
                                         "mbr_240k", "mbr_60k", "mp3_only", "nellymoser_22k",
                                         "nellymoser_8k_h263", "scene_cuts", "short_3s",
                                         "speex_only", "video_late_700ms"),
                         [](const auto& parameter) { return std::string(parameter.param); });

struct ExpectedRow {
    std::uint32_t fragment;
    std::uint64_t time;
    bool hasData;
};

struct CutCase {
    const char* clip;
    const char* fragmentDuration;
    std::vector<ExpectedRow> rows;
};

class FlvCutTest : public testing::TestWithParam<CutCase> {};

// Worked out by hand from the key frames and tag times of each clip and the cut rule.
const CutCase kCuts[] = {
    // Key frames at 0, 2023, 4023, ...; an audio tag crosses each line before the key frame.
    {"h264_aac_20s",
     "4",
     {{1, 0, true}, {2, 4023, true}, {3, 8023, true}, {4, 12023, true}, {5, 16023, true}}},
    // Key frames stand on the lines themselves.
    {"h264_only", "4", {{1, 0, true}, {2, 4000, true}, {3, 8000, true}, {4, 12000, true}}},
    // 13343 to 20223 without a key frame: cell 5 has no data of its own.
    {"scene_cuts",
     "4",
     {{1, 0, true},
      {2, 4023, true},
      {3, 8063, true},
      {4, 13343, true},
      {5, 16000, false},
      {6, 20223, true}}},
    // Key frames at 0, 9023, 18023, 27023, 36023; behind 27023 two whole cells go without one.
    {"long_gop_9s",
     "4",
     {{1, 0, true},
      {2, 4000, false},
      {3, 9023, true},
      {4, 12000, false},
      {5, 18023, true},
      {6, 20000, false},
      {7, 27023, true},
      {8, 28000, false},
      {9, 32000, false},
      {10, 36023, true}}},
    {"long_gop_9s_noaudio",
     "4",
     {{1, 0, true},
      {2, 4000, false},
      {3, 9000, true},
      {4, 12000, false},
      {5, 18000, true},
      {6, 20000, false},
      {7, 27000, true}}},
    {"video_late_700ms", "4", {{1, 0, true}, {2, 4745, true}, {3, 8745, true}}},
    // The last tag opens a cell, so the last fragment gets no sample; it is listed all the same.
    {"aac_edge_12s", "4", {{1, 0, true}, {2, 4040, true}, {3, 8034, true}, {4, 12027, true}}},
    {"short_3s", "4", {{1, 0, true}}},
};

TEST_P(FlvCutTest, FragmentsBeginWhereTheCutRuleSays) {
    const CutCase& expected = GetParam();
    const TempDir out;
    const Presentation presentation = package(
        out, expected.clip, {std::string("--fragment-duration=") + expected.fragmentDuration});
    ASSERT_FALSE(presentation.indexes.empty());
    const std::vector<IndexRow>& rows = presentation.indexes.back().global;
    ASSERT_EQ(rows.size(), expected.rows.size());
    for (std::size_t i = 0; i < rows.size(); ++i) {
        EXPECT_EQ(rows[i].fragment, expected.rows[i].fragment) << "row " << i;
        EXPECT_EQ(rows[i].time, expected.rows[i].time) << "row " << i;
        EXPECT_EQ(rows[i].afraOffset != kNoData, expected.rows[i].hasData) << "row " << i;
    }
}

INSTANTIATE_TEST_SUITE_P(Clips, FlvCutTest, testing::ValuesIn(kCuts),
                         [](const auto& parameter) { return std::string(parameter.param.clip); });

TEST(FlvRunTest, TwoRunsAtOneTimeGiveTheSameBytes) {
    const TempDir first;
    const TempDir second;
    for (const TempDir* out : {&first, &second}) {
        ProcessSettings settings;
        settings.environment = {{"SOURCE_DATE_EPOCH", "1700000000"}};
        const ProcessResult result = run({KZ_PACKAGER, "--input-file=" + media("scene_cuts"),
                                          "--output-path=" + out->path(), "--segment-duration=9"},
                                         settings);
        ASSERT_EQ(result.status, 0) << result.err;
    }
    for (const char* name : {"scene_cutsSeg1.kzs", "scene_cutsSeg1.kzx", "scene_cutsSeg2.kzs",
                             "scene_cutsSeg2.kzx", "scene_cuts.kzd"}) {
        EXPECT_EQ(difference(readFile(first / name), readFile(second / name)), "") << name;
    }
}

// The check above is only worth something if it notices what is wrong.
TEST(PresentationCheckTest, NoticesEachKindOfDisagreement) {
    const TempDir out;
    const Presentation sound = package(out, "scene_cuts");
    ASSERT_EQ(describe(sound), "");
    const std::vector<std::function<void(Presentation&)>> damages = {
        [](Presentation& p) { ++p.indexes.back().global[1].afraOffset; },
        [](Presentation& p) { p.indexes.back().global[1].afraOffset = kNoData; },
        [](Presentation& p) { ++p.indexes.back().global[2].fragment; },
        [](Presentation& p) { p.indexes.clear(); },
        [](Presentation& p) { ++p.segments[0].fragments[0].afra.local.at(0).offset; },
        [](Presentation& p) { ++p.segments[0].fragments[1].sequenceNumber; },
        [](Presentation& p) { p.segments[0].fragments[0].bootstrap.clear(); },
        // Video is track 1, audio 2, the hint track 3.
        [](Presentation& p) { ++p.segments[0].fragments[1].samples[3][5].decodeTime; },
        [](Presentation& p) { ++p.segments[0].fragments[1].samples[3][5].offset; },
        [](Presentation& p) { --p.segments[0].fragments[1].samples[3].back().size; },
        [](Presentation& p) { p.segments[0].fragments[1].samples[1][5].flags ^= 1; },
        [](Presentation& p) { p.segments[0].fragments[1].samples[2][5].offset = 40; },
    };
    for (std::size_t i = 0; i < damages.size(); ++i) {
        Presentation damaged = sound;
        damages[i](damaged);
        EXPECT_NE(describe(damaged), "") << "damage " << i;
    }
}

}  // namespace
}  // namespace kz::test
