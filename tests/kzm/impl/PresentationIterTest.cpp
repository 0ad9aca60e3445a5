#include <algorithm>
#include <vector>

#include <gtest/gtest.h>

#include "kzm/ReaderSupport.h"
#include "kzs/base/ByteOrder.h"
#include "support/IsoBuilder.h"

namespace qlix::kzm {
namespace {

using namespace kz::test;
using torvo::kzs::fourCc;

TEST(PresentationIterTest, ShiftsTimesAndMarksPauses) {
    IsoFile file = oneTrack(10);
    file.tracks[0].edits = {{{500, -1}, {160, 80}}};
    EXPECT_EQ(timesOf(OpenIso(file, false).samples()), "0e 500 540 580 620k");
}

TEST(PresentationIterTest, GivesMarkersWithoutBytesOrDescription) {
    IsoFile file = oneTrack(10);
    file.tracks[0].timescale = 90000;
    file.tracks[0].edits = {{{100, 0}, {500, -1}, {100, 0}}};
    const std::vector<Sample> samples = OpenIso(file, false).samples();
    const auto marker = std::find_if(samples.begin(), samples.end(), [](const Sample& sample) {
        return sample.frameType() == kSampleIsEmptyEdit;
    });
    ASSERT_NE(marker, samples.end());
    EXPECT_EQ(marker->time, 9000U);
    EXPECT_EQ(marker->timescale, 90000U);
    EXPECT_EQ(marker->size, 0U);
    EXPECT_EQ(marker->fileOffset, 0U);
    EXPECT_EQ(marker->description, nullptr);
    EXPECT_EQ(marker->handler, fourCc("vide"));
    EXPECT_EQ(marker->track.info().trackId, 1U);
    EXPECT_EQ((marker + 1)->time, 54000U);
}

TEST(PresentationIterTest, IsNotUsedWhenEditsAreIgnored) {
    IsoFile file = oneTrack(3);
    file.tracks[0].edits = {{{500, -1}, {160, 80}}};
    EXPECT_EQ(timesOf(OpenIso(file, true).samples()), "0k 40 80");
}

TEST(PresentationIterTest, RepeatsAndReordersTheMedia) {
    IsoFile file = oneTrack(10);
    file.tracks[0].edits = {{{80, 200}, {120, 0}, {40, 200}}};
    EXPECT_EQ(timesOf(OpenIso(file, false).samples()), "0k 40 80k 120 160 200k");
}

TEST(PresentationIterTest, KeepsTheEndOfMediaThatBeginsLate) {
    // The first 4 samples are cut off: the rest reaches behind the movie's duration in the media.
    IsoFile file = oneTrack(10);
    file.movieDuration = 240;
    file.tracks[0].edits = {{{240, 160}}};
    EXPECT_EQ(timesOf(OpenIso(file, false).samples()), "0 40k 80 120 160 200");
}

TEST(PresentationIterTest, KeepsAFirstSampleThatTheMoviesTicksCannotTell) {
    // 6006 / 90000 s are 66.7 ms.
    IsoFile file = oneTrack(10, 3003);
    file.tracks[0].timescale = 90000;
    file.tracks[0].edits = {{{100, 6006}}};
    EXPECT_EQ(timesOf(OpenIso(file, false).samples()), "0 3003 6006");
}

TEST(PresentationIterTest, ComparesDecodeTimesAloneWithAnEdit) {
    // The first two pictures are shown behind 80, yet they are decoded before.
    IsoFile file = oneTrack(4);
    for (IsoSample& sample : file.tracks[0].samples) sample.compositionOffset = 80;
    file.tracks[0].edits = {{{160, 80}}};
    EXPECT_EQ(timesOf(OpenIso(file, false).samples()), "0 40");
}

TEST(PresentationIterTest, StartsInsideAnEdit) {
    IsoFile file = oneTrack(10);
    file.tracks[0].edits = {{{80, -1}, {200, 40}, {80, 0}}};
    const OpenIso open(file, false);
    EXPECT_EQ(timesOf(open.samples({160, 1000}, {100000, 1000})), "160 200 240k 280k 320");
    EXPECT_EQ(timesOf(open.samples({0, 1000}, {160, 1000})), "0e 80 120");
    EXPECT_EQ(timesOf(open.samples({280, 1000}, {100000, 1000})), "280k 320");
}

TEST(PresentationIterTest, TakesAListWithoutRowsForNone) {
    IsoFile file = oneTrack(3);
    file.tracks[0].edits = std::vector<IsoEdit>();
    EXPECT_EQ(timesOf(OpenIso(file, false).samples()), "0k 40 80");
}

TEST(PresentationIterTest, WalksFragmentsToo) {
    IsoFile file = fragmented(10, 3);
    file.tracks[0].edits = {{{500, -1}, {160, 80}}};
    EXPECT_EQ(timesOf(OpenIso(file, false).samples()), "0e 500 540 580 620k");
}

TEST(PresentationIterTest, RunsALastEditWithoutDurationToTheEndOfTheFragments) {
    IsoFile file = fragmented(5, 3);
    file.movieDuration = 0;
    file.tracks[0].edits = {{{0, 80}}};
    EXPECT_EQ(timesOf(OpenIso(file, false).samples()), "0 40 80");
    IsoFile plain = oneTrack(5);
    plain.tracks[0].edits = {{{0, 80}}};
    EXPECT_EQ(timesOf(OpenIso(plain, false).samples()), "");
}

TEST(PresentationIterTest, ALastPauseWithoutDurationIsNotRunToTheEnd) {
    IsoFile file = fragmented(5, 3);
    file.movieDuration = 0;
    file.tracks[0].edits = {{{80, 80}, {0, -1}}};
    const OpenIso open(file, false);
    EXPECT_EQ(timesOf(open.samples()), "0 40 80e");
    EXPECT_EQ(timesOf(open.samples({100, 1000}, {1000, 1000})), "");
}

}  // namespace
}  // namespace qlix::kzm
