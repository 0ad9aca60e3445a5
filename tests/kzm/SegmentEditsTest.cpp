#include <gtest/gtest.h>

#include "kzm/WriterHarness.h"

namespace qlix::kzm {
namespace {

using namespace kz::test;

using Edits = std::vector<EditListRow>;
using Rows = std::vector<RunListRow>;

constexpr std::size_t kVideo = 0;  // place of the track in the file
constexpr std::size_t kAudio = 1;
constexpr std::size_t kHint = 2;
constexpr std::uint32_t kSync = 0x02000000;
constexpr std::uint32_t kOther = 0x01010000;

std::uint64_t mediaDuration(const Bytes& file, std::size_t track) {
    return u64At(file,
                 boxAt(file, "moov/trak[" + std::to_string(track) + "]/mdia/mdhd").offset + 32);
}

std::uint64_t trackDuration(const Bytes& file, std::size_t track) {
    return u64At(file, boxAt(file, "moov/trak[" + std::to_string(track) + "]/tkhd").offset + 36);
}

std::uint64_t movieDuration(const Bytes& file) {
    const std::uint64_t fromHeader = u64At(file, boxAt(file, "moov/mvhd").offset + 32);
    EXPECT_EQ(u64At(file, boxAt(file, "moov/mvex/mehd").offset + 12), fromHeader);
    return fromHeader;
}

TEST(SegmentEditsTest, ATrackFromTimeZeroHasOneRow) {
    SegmentDriver test;
    test.writer.startFragment();
    test.video(0, text("a"), 1);
    test.video(40, text("b"));
    test.writer.startFragment();
    EXPECT_EQ(editsOf(test.file(), kVideo), (Edits{{41, 0}}));
    test.video(80, text("c"));
    test.writer.close();
    EXPECT_EQ(editsOf(test.file(), kVideo), (Edits{{81, 0}}));
    EXPECT_EQ(mediaDuration(test.file(), kVideo), 81U);
    EXPECT_EQ(trackDuration(test.file(), kVideo), 81U);
    EXPECT_EQ(movieDuration(test.file()), 81U);
}

TEST(SegmentEditsTest, TheHeadersOfAnEmptyFileCountNoRows) {
    SegmentDriver test;
    test.writer.startFragment();
    EXPECT_EQ(editsOf(test.file(), kVideo), Edits());
    test.writer.close();
    EXPECT_EQ(editsOf(test.file(), kVideo), Edits());
    EXPECT_EQ(topTypes(test.file()), (std::vector<std::string>{"ftyp", "moov"}));
    EXPECT_EQ(movieDuration(test.file()), 0U);
}

TEST(SegmentEditsTest, AnUnusedTrackHasARowOfNoDuration) {
    SegmentDriver test;
    test.writer.startFragment();
    test.video(0, text("a"), 1);
    test.writer.close();
    EXPECT_EQ(editsOf(test.file(), kAudio), (Edits{{0, 0}}));
    EXPECT_EQ(mediaDuration(test.file(), kAudio), 0U);
    EXPECT_EQ(trackDuration(test.file(), kAudio), 0U);
}

TEST(SegmentEditsTest, ATrackThatStartsLateStandsBehindAnEmptyEdit) {
    SegmentDriver test;
    test.writer.startFragment();
    test.audio(0, text("x"));
    test.video(500, text("a"), 1);
    test.video(540, text("b"));
    test.writer.close();
    EXPECT_EQ(editsOf(test.file(), kVideo), (Edits{{0, 0}, {500, -1}, {41, 0}}));
    EXPECT_EQ(editsOf(test.file(), kAudio), (Edits{{1, 0}}));
    EXPECT_EQ(mediaDuration(test.file(), kVideo), 41U);
    EXPECT_EQ(trackDuration(test.file(), kVideo), 541U);
    EXPECT_EQ(rowsOf(test.file(), 0, 1), (Rows{{40, 1, kSync, 0}, {1, 1, kOther, 0}}));
}

TEST(SegmentEditsTest, ALateStartInALaterFragmentKeepsTheRowInFront) {
    SegmentDriver test;
    test.writer.startFragment();
    test.audio(0, text("x"));
    test.writer.startFragment();
    test.video(4000, text("a"), 1);
    test.writer.close();
    EXPECT_EQ(editsOf(test.file(), kVideo), (Edits{{0, 0}, {4000, -1}, {1, 0}}));
}

TEST(SegmentEditsTest, AMarkerAndALaterSampleMakeAnEmptyEditAndMediaTimeGoesOn) {
    SegmentDriver test;
    test.writer.startFragment();
    test.video(0, text("a"), 1);
    test.video(40, text("b"));
    test.marker(test.videoTrack, "vide", 80);
    test.video(200, text("c"));
    test.video(240, text("d"));
    test.writer.close();
    EXPECT_EQ(editsOf(test.file(), kVideo), (Edits{{80, 0}, {120, -1}, {41, 80}}));
    EXPECT_EQ(rowsOf(test.file(), 0, 1),
              (Rows{{40, 1, kSync, 0}, {40, 1, kOther, 0}, {40, 1, kOther, 0}, {1, 1, kOther, 0}}));
    EXPECT_EQ(mediaDuration(test.file(), kVideo), 121U);
    EXPECT_EQ(trackDuration(test.file(), kVideo), 241U);
}

TEST(SegmentEditsTest, ASampleBehindAGapKeepsTheLastDuration) {
    SegmentDriver test;
    test.writer.startFragment();
    test.video(0, text("a"), 1);
    test.marker(test.videoTrack, "vide", 80);
    test.video(200, text("b"));
    test.writer.close();
    // The marker set the duration to 0, and the first sample behind the gap leaves it there.
    EXPECT_EQ(editsOf(test.file(), kVideo), (Edits{{80, 0}, {120, -1}, {0, 80}}));
    EXPECT_EQ(rowsOf(test.file(), 0, 1), (Rows{{80, 1, kSync, 0}, {0, 1, kOther, 0}}));
    EXPECT_EQ(trackDuration(test.file(), kVideo), 200U);
}

TEST(SegmentEditsTest, AFragmentThatEndsInAPauseLeavesTheRowAlone) {
    SegmentDriver test;
    test.writer.startFragment();
    test.video(0, text("a"), 1);
    test.marker(test.videoTrack, "vide", 80);
    test.writer.startFragment();
    EXPECT_EQ(editsOf(test.file(), kVideo), (Edits{{80, 0}}));
    EXPECT_EQ(rowsOf(test.file(), 0, 1), (Rows{{80, 1, kSync, 0}}));
    test.video(200, text("b"));
    test.writer.close();
    EXPECT_EQ(editsOf(test.file(), kVideo), (Edits{{80, 0}, {120, -1}, {0, 80}}));
}

TEST(SegmentEditsTest, ASecondMarkerInAPauseChangesNothing) {
    SegmentDriver test;
    test.writer.startFragment();
    test.video(0, text("a"), 1);
    test.marker(test.videoTrack, "vide", 80);
    test.marker(test.videoTrack, "vide", 100);
    test.video(200, text("b"));
    test.video(240, text("c"));
    test.writer.close();
    EXPECT_EQ(editsOf(test.file(), kVideo), (Edits{{80, 0}, {120, -1}, {41, 80}}));
}

TEST(SegmentEditsTest, AMarkerMayComeFirst) {
    SegmentDriver test;
    test.writer.startFragment();
    test.audio(0, text("x"));
    test.marker(test.videoTrack, "vide", 100);
    test.video(300, text("a"), 1);
    test.video(340, text("b"));
    test.writer.close();
    // Up to the marker the track stands in its row without a sample.
    EXPECT_EQ(editsOf(test.file(), kVideo), (Edits{{100, 0}, {200, -1}, {41, 100}}));
}

TEST(SegmentEditsTest, RowsAreInTicksOfTheMovieAndHalvesGoDown) {
    SegmentDriver::Options options;
    options.movieTimescale = 600;
    options.videoTimescale = 1200;
    SegmentDriver test(options);
    test.writer.startFragment();
    test.audio(0, text("x"));
    test.video(5, text("a"), 1);  // 6 ticks of 1200, 3 of the movie
    test.video(10, text("b"));    // 12 ticks; the last one lasts 2
    test.writer.close();
    EXPECT_EQ(editsOf(test.file(), kVideo), (Edits{{0, 0}, {3, -1}, {4, 0}}));
    EXPECT_EQ(mediaDuration(test.file(), kVideo), 8U);
    EXPECT_EQ(trackDuration(test.file(), kVideo), 7U);
    EXPECT_EQ(rowsOf(test.file(), 0, 1), (Rows{{6, 1, kSync, 0}, {2, 1, kOther, 0}}));
}

TEST(SegmentEditsTest, TheLastSampleLastsAsManyTicksAsOneOfTheMovie) {
    SegmentDriver::Options options;
    options.videoTimescale = 90000;
    SegmentDriver test(options);
    test.writer.startFragment();
    test.video(0, text("a"), 1);
    test.writer.close();
    EXPECT_EQ(rowsOf(test.file(), 0, 1), (Rows{{90, 1, kSync, 0}}));
    EXPECT_EQ(editsOf(test.file(), kVideo), (Edits{{1, 0}}));
}

TEST(SegmentEditsTest, TheHintTrackIsStretchedToTheEndOfTheTracksItRefersTo) {
    SegmentDriver::Options options;
    options.videoTimescale = 25;
    SegmentDriver test(options);
    test.writer.startFragment();
    test.video(0, text("a"), 1);  // lasts a tick of 25: 40 ms
    test.writer.close();
    EXPECT_EQ(mediaDuration(test.file(), kHint), 40U);
    EXPECT_EQ(trackDuration(test.file(), kHint), 40U);
    EXPECT_EQ(editsOf(test.file(), kHint), (Edits{{40, 0}}));
    EXPECT_EQ(rowsOf(test.file(), 0, 3), (Rows{{40, 1, kSync, 0}}));
    EXPECT_EQ(mediaDuration(test.file(), kVideo), 1U);
    EXPECT_EQ(movieDuration(test.file()), 40U);
}

TEST(SegmentEditsTest, TheHeadersKeepTheirSize) {
    SegmentDriver test;
    test.writer.startFragment();
    const std::size_t before = boxAt(test.file(), "moov").size;
    test.audio(0, text("x"));
    test.video(500, text("a"), 1);
    test.marker(test.videoTrack, "vide", 600);
    test.video(700, text("b"));
    test.writer.close();
    EXPECT_EQ(boxAt(test.file(), "moov").size, before);
}

TEST(SegmentEditsTest, AFullListThrowsSixteenAndEndsTheWriting) {
    SegmentDriver::Options options;
    options.maxEdits = 0;  // one row
    SegmentDriver test(options);
    test.writer.startFragment();
    test.audio(0, text("x"));
    EXPECT_EQ(codeThrownBy([&] { test.video(500, text("a"), 1); }), 16U);
    EXPECT_EQ(codeThrownBy([&] { test.audio(600, text("y")); }), 48U);
    EXPECT_EQ(codeThrownBy([&] { test.writer.startFragment(); }), 48U);
    EXPECT_EQ(codeThrownBy([&] { test.writer.flush(); }), 48U);
    EXPECT_EQ(codeThrownBy([&] { test.bootstrap(text("B")); }), 20U);
}

TEST(SegmentEditsTest, TakesTheTimeOriginOffTheSamplesAndLeavesItInTheIndex) {
    SegmentDriver::Options options;
    options.timeOrigin = 100;
    SegmentDriver test(options);
    test.writer.startFragment();
    test.video(100, text("a"), 1, true);
    test.video(140, text("b"));
    test.writer.close();
    EXPECT_EQ(editsOf(test.file(), kVideo), (Edits{{41, 0}}));
    EXPECT_EQ(editsOf(test.file(), kHint), (Edits{{41, 0}}));
    EXPECT_EQ(u64At(test.file(), boxAt(test.file(), "afra").offset + 21), 100U);
}

TEST(SegmentEditsTest, FindsTheTimeOriginBehindOtherBoxes) {
    SegmentDriver::Options options;
    options.describe = false;
    options.descriptionSlots = 2;  // room for more than the usual
    SegmentDriver test(options);
    test.describe(test.videoTrack, "vide");
    RtmpSampleDescriptor description;
    description.handler = torvo::kzs::fourCc("hint");
    description.format = torvo::kzs::fourCc("rtmp");
    test.writer.addSampleDescription(test.hintTrack, description,
                                     u32(12) + text("amhp") + u32(7) + u32(8) + text("free") +
                                         u32(12) + text("amto") + u32(100));
    test.writer.startFragment();
    test.video(100, text("a"), 1);
    test.writer.close();
    EXPECT_EQ(editsOf(test.file(), kVideo), (Edits{{1, 0}}));
}

TEST(SegmentEditsTest, ATimeInFrontOfTheOriginGoesBack) {
    SegmentDriver::Options options;
    options.timeOrigin = 100;
    SegmentDriver test(options);
    test.writer.startFragment();
    EXPECT_EQ(codeThrownBy([&] { test.video(99, text("a"), 1); }), 1280U);
}

}  // namespace
}  // namespace qlix::kzm
