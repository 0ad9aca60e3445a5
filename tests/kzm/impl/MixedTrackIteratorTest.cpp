#include <vector>

#include <gtest/gtest.h>

#include "kzm/ReaderSupport.h"
#include "kzs/base/ByteOrder.h"

namespace qlix::kzm {
namespace {

using namespace kz::test;
using torvo::kzs::fourCc;

/// Samples of 40 ms, a key every 5: four of them in tables, then fragments of three.
IsoFile mixed(unsigned count) {
    IsoFile file = fragmented(count, 3);
    file.samplesInTables = 4;
    file.movieDuration = 160;
    return file;
}

TEST(MixedTrackIteratorTest, GoesOnFromTheTablesToTheFragmentsWithoutABreakInTime) {
    EXPECT_EQ(timesOf(OpenIso(mixed(10)).samples()), "0k 40 80 120 160 200k 240 280 320 360");
}

TEST(MixedTrackIteratorTest, FindsTheDataOfBoth) {
    IsoFile file = mixed(10);
    file.tracks.push_back(isoAudioTrack(2, 20));
    const OpenIso open(file);
    std::size_t next[2] = {0, 0};
    for (const Sample& sample : open.samples()) {
        const std::size_t track = sample.track.info().trackId - 1;
        // No fragment has a number for what is in front of all of them.
        EXPECT_EQ(sample.sequenceNumber == 0, next[track] < 4);
        EXPECT_EQ(open.dataOf(sample), file.tracks[track].samples[next[track]++].data);
    }
    EXPECT_EQ(next[0], 10U);
    EXPECT_EQ(next[1], 20U);
}

TEST(MixedTrackIteratorTest, WalksAnyRangeOfTimes) {
    const OpenIso open(mixed(10));
    EXPECT_EQ(timesOf(open.samples({0, 1000}, {160, 1000})), "0k 40 80 120");
    EXPECT_EQ(timesOf(open.samples({0, 1000}, {161, 1000})), "0k 40 80 120 160");
    EXPECT_EQ(timesOf(open.samples({120, 1000}, {201, 1000})), "120 160 200k");
    EXPECT_EQ(timesOf(open.samples({121, 1000}, {241, 1000})), "160 200k 240");
    EXPECT_EQ(timesOf(open.samples({160, 1000}, {200, 1000})), "160");
    EXPECT_EQ(timesOf(open.samples({320, 1000}, {9999, 1000})), "320 360");
    EXPECT_EQ(timesOf(open.samples({80, 1000}, {80, 1000})), "");
}

TEST(MixedTrackIteratorTest, EndsWithTheTablesWhereNoFragmentFollows) {
    EXPECT_EQ(timesOf(OpenIso(mixed(4)).samples()), "0k 40 80 120");
    EXPECT_EQ(timesOf(OpenIso(mixed(2)).samples()), "0k 40");
}

TEST(MixedTrackIteratorTest, ATrackWithoutTablesBeginsInTheFragments) {
    IsoFile file = mixed(6);
    file.tracks.push_back(isoAudioTrack(2, 0));
    file.samplesInTables = 0;
    EXPECT_EQ(timesOf(OpenIso(file).samples({0, 1000}, {9999, 1000})), "0k 40 80 120 160 200k");
}

TEST(MixedTrackIteratorTest, ATrackWhoseTablesTellNoTimesBeginsInTheFragments) {
    const Bytes bytes = mixed(10).build();
    const Bytes noRows = u32(0);
    const OpenIso open(bytes.patched(bytes.find("stts") + 8, noRows));
    EXPECT_EQ(timesOf(open.samples({0, 1000}, {9999, 1000})), "0 40k 80 120 160 200");
}

TEST(MixedTrackIteratorTest, AnEditOfTheTablesMeansTheFragmentsToo) {
    // The list was written when there was nothing but the tables: 160 ms, less 40 of them.
    IsoFile file = mixed(7);
    file.tracks[0].edits = {{120, 40}};
    EXPECT_EQ(timesOf(OpenIso(file, false).samples()), "0 40 80 120 160k 200");
}

TEST(MixedTrackIteratorTest, CountsTicksOfTheMedia) {
    IsoFile file = mixed(7);
    file.tracks[0].timescale = 90000;
    file.movieTimescale = 600;
    for (IsoSample& sample : file.tracks[0].samples) sample.duration = 3003;
    const std::vector<Sample> samples = OpenIso(file).samples();
    ASSERT_EQ(samples.size(), 7U);
    EXPECT_EQ(samples[3].time, 9009U);
    EXPECT_EQ(samples[4].time, 12012U);
    EXPECT_EQ(samples[6].time, 18018U);
}

}  // namespace
}  // namespace qlix::kzm
