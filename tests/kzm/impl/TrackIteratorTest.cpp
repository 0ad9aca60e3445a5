#include <vector>

#include <gtest/gtest.h>

#include "kzm/ReaderSupport.h"
#include "kzs/base/ByteOrder.h"
#include "support/IsoBuilder.h"

namespace qlix::kzm {
namespace {

using namespace kz::test;
using torvo::kzs::fourCc;

TEST(TrackIteratorTest, GivesEveryFieldOfASample) {
    IsoFile file = oneTrack(4);
    file.tracks[0].timescale = 90000;
    file.tracks[0].entries.push_back(isoVideoEntry("H263", 64, 48));
    file.tracks[0].hasDependencies = true;
    file.tracks[0].samples[1].compositionOffset = 0xFFFFFFD8;
    file.tracks[0].samples[1].dependency = 0x24;
    file.tracks[0].samples[1].description = 2;
    file.tracks[0].samples[2].description = 2;
    const OpenIso open(file);
    const std::vector<Sample> samples = open.samples();
    ASSERT_EQ(samples.size(), 4U);
    const Sample& sample = samples[1];
    EXPECT_EQ(sample.recordSize, 32U);
    EXPECT_EQ(sample.time, 40U);
    EXPECT_EQ(sample.timescale, 90000U);
    EXPECT_EQ(sample.size, file.tracks[0].samples[1].data.size());
    EXPECT_EQ(sample.compositionOffset, 0xFFFFFFD8U);
    EXPECT_EQ(sample.handler, fourCc("vide"));
    EXPECT_EQ(sample.flags, 0x2400U);
    EXPECT_EQ(sample.sequenceNumber, 0U);
    EXPECT_EQ(sample.description, &open.reader.tracks()[0].description(1));
    EXPECT_EQ(sample.track.info().trackId, 1U);
    EXPECT_EQ(samples[0].flags, 1U);
    EXPECT_EQ(samples[0].frameType(), kSampleIsSync);
    EXPECT_EQ(samples[3].description, &open.reader.tracks()[0].description(0));
}

TEST(TrackIteratorTest, WalksAnyRangeOfTimes) {
    const OpenIso open(oneTrack(10));
    EXPECT_EQ(timesOf(open.samples({0, 1000}, {400, 1000})),
              "0k 40 80 120 160 200k 240 280 320 360");
    EXPECT_EQ(timesOf(open.samples({80, 1000}, {200, 1000})), "80 120 160");
    EXPECT_EQ(timesOf(open.samples({81, 1000}, {201, 1000})), "120 160 200k");
    EXPECT_EQ(timesOf(open.samples({361, 1000}, {9999, 1000})), "");
    EXPECT_EQ(timesOf(open.samples({80, 1000}, {80, 1000})), "");
    EXPECT_EQ(timesOf(open.samples({200, 1000}, {80, 1000})), "");
}

TEST(TrackIteratorTest, EndsBeforeTheEndTimeButKeepsASampleThatReachesBeyondIt) {
    const OpenIso open(oneTrack(3));
    EXPECT_EQ(timesOf(open.samples({0, 1000}, {80, 1000})), "0k 40");
    EXPECT_EQ(timesOf(open.samples({0, 1000}, {81, 1000})), "0k 40 80");
}

TEST(TrackIteratorTest, StartsInTheMiddleOfAChunk) {
    IsoFile file = oneTrack(20);
    file.tracks[0].samplesPerChunk = 7;
    for (unsigned i = 0; i < 20; ++i) file.tracks[0].samples[i].compositionOffset = i * 3;
    file.tracks[0].hasDependencies = true;
    file.tracks[0].samples[9].dependency = 9;
    const OpenIso open(file);
    const std::vector<Sample> samples = open.samples({9 * 40, 1000}, {12 * 40, 1000});
    EXPECT_EQ(timesOf(samples), "360 400k 440");
    EXPECT_EQ(samples[0].compositionOffset, 27U);
    EXPECT_EQ(samples[0].flags, 0x900U);
    EXPECT_EQ(open.dataOf(samples[0]), file.tracks[0].samples[9].data);
    EXPECT_EQ(open.dataOf(samples[2]), file.tracks[0].samples[11].data);
}

TEST(TrackIteratorTest, GivesTheFixedSizeToEverySample) {
    IsoFile file = oneTrack(6);
    for (IsoSample& sample : file.tracks[0].samples) sample.data = pattern(12, 5);
    file.tracks[0].fixedSize = 12;
    const OpenIso open(file);
    for (const Sample& sample : open.samples()) {
        EXPECT_EQ(sample.size, 12U);
        EXPECT_EQ(open.dataOf(sample), pattern(12, 5));
    }
    EXPECT_EQ(open.samples({100, 1000}, {500, 1000}).size(), 3U);
}

TEST(TrackIteratorTest, HasNoSyncSampleWithoutTheirTable) {
    IsoFile file = oneTrack(3);
    file.tracks[0].hasSync = false;
    EXPECT_EQ(timesOf(OpenIso(file).samples()), "0 40 80");
}

TEST(TrackIteratorTest, HasNoCompositionOffsetWithoutTheirTable) {
    IsoFile file = oneTrack(2);
    file.tracks[0].samples[1].compositionOffset = 7;
    file.tracks[0].hasComposition = false;
    EXPECT_EQ(OpenIso(file).samples()[1].compositionOffset, 0U);
}

TEST(TrackIteratorTest, KeepsSamplesOfNoDuration) {
    IsoFile file = oneTrack(5);
    file.tracks[0].samples[1].duration = 0;
    file.tracks[0].samples[2].duration = 0;
    file.tracks[0].samples[4].duration = 0;
    const OpenIso open(file);
    EXPECT_EQ(timesOf(open.samples()), "0k 40 40 40 80");
    EXPECT_EQ(timesOf(open.samples({40, 1000}, {41, 1000})), "40 40 40");
    EXPECT_EQ(timesOf(open.samples({80, 1000}, {81, 1000})), "80");
    EXPECT_EQ(timesOf(open.samples({0, 1000}, {40, 1000})), "0k");
}

TEST(TrackIteratorTest, EndsWhereTheSizesDo) {
    IsoFile file = oneTrack(3);
    Bytes bytes = file.build();
    const std::size_t stsz = bytes.find("stsz");
    EXPECT_EQ(timesOf(OpenIso(bytes.patched(stsz + 12, u32(2))).samples()), "0k 40");
}

TEST(TrackIteratorTest, GoesOnInTheFileWhereChunkOffsetsRunOut) {
    IsoFile file = oneTrack(6);
    file.tracks[0].samplesPerChunk = 2;
    Bytes bytes = file.build();
    const std::size_t stco = bytes.find("stco");
    const OpenIso open(bytes.patched(stco + 8, u32(1)));
    const std::vector<Sample> samples = open.samples();
    ASSERT_EQ(samples.size(), 6U);
    // The track is alone in the file, so its chunks follow each other anyway.
    EXPECT_EQ(open.dataOf(samples[5]), file.tracks[0].samples[5].data);
}

TEST(TrackIteratorTest, EndsAtADescriptionThatIsNotThere) {
    IsoFile file = oneTrack(6);
    file.tracks[0].samplesPerChunk = 2;
    file.tracks[0].samples[4].description = 2;
    file.tracks[0].samples[5].description = 2;
    EXPECT_EQ(timesOf(OpenIso(file).samples()), "0k 40 80 120");
    for (IsoSample& sample : file.tracks[0].samples) sample.description = 0;
    EXPECT_EQ(timesOf(OpenIso(file).samples()), "");
}

TEST(TrackIteratorTest, HasNoSampleBeyondNumbersOf32Bits) {
    // Two rows of one sample each, which are made to claim 2^32 - 1 samples of one tick each.
    IsoFile file = oneTrack(2);
    file.tracks[0].samples[1].duration = 41;
    const Bytes bytes = file.build();
    const Bytes row = u32(0xFFFFFFFF) + u32(1);
    const OpenIso open(bytes.patched(bytes.find("stts") + 12, row + row));
    EXPECT_EQ(timesOf(open.samples({0, 1000}, {2, 1000})), "0k 1");
    // Samples 2^32 + 1 and 2^32 + 2: the low halves of their numbers are those of the only two.
    EXPECT_EQ(timesOf(open.samples({0x100000001, 1000}, {0x100000003, 1000})), "");
}

TEST(TrackIteratorTest, ThrowsTwentyWhenAskedBeyondTheEnd) {
    const OpenIso open(oneTrack(1));
    const auto iterator =
        open.reader.createIterator({0, 1000}, {100, 1000}, std::vector<std::uint32_t>{});
    iterator->next();
    EXPECT_FALSE(iterator->hasSample());
    EXPECT_EQ(codeThrownBy([&] { iterator->next(); }), 20U);
}

}  // namespace
}  // namespace qlix::kzm
