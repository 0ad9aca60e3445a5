#include <vector>

#include <gtest/gtest.h>

#include "kzm/ReaderSupport.h"
#include "kzs/base/ByteOrder.h"
#include "support/IsoBuilder.h"

namespace qlix::kzm {
namespace {

using namespace kz::test;
using torvo::kzs::fourCc;

TEST(FragmentedTrackIteratorTest, GivesEveryFieldOfASample) {
    IsoFile file = fragmented(6, 2);
    file.tracks[0].timescale = 90000;
    file.tracks[0].entries.push_back(isoVideoEntry("H263", 64, 48));
    file.tracks[0].samples[2].compositionOffset = 17;
    for (unsigned i = 2; i < 4; ++i) file.tracks[0].samples[i].description = 2;
    const OpenIso open(file);
    const std::vector<Sample> samples = open.samples();
    ASSERT_EQ(samples.size(), 6U);
    const Sample& sample = samples[2];
    EXPECT_EQ(sample.time, 80U);
    EXPECT_EQ(sample.timescale, 90000U);
    EXPECT_EQ(sample.size, file.tracks[0].samples[2].data.size());
    EXPECT_EQ(sample.compositionOffset, 17U);
    EXPECT_EQ(sample.handler, fourCc("vide"));
    EXPECT_EQ(sample.flags, 0U);
    EXPECT_EQ(sample.sequenceNumber, 2U);
    EXPECT_EQ(sample.description, &open.reader.tracks()[0].description(1));
    EXPECT_EQ(samples[0].flags, kSampleIsSync);
    EXPECT_EQ(samples[4].sequenceNumber, 3U);
}

TEST(FragmentedTrackIteratorTest, FindsTheDataByEveryKindOfBase) {
    for (const IsoBase base : {IsoBase::kFileOffset, IsoBase::kMoof, IsoBase::kImplied}) {
        IsoFile file = fragmented(10, 4);
        file.tracks.push_back(isoAudioTrack(2, 20));
        file.base = base;
        file.samplesPerRun = 3;
        file.usesTrackDefaults = true;
        const OpenIso open(file);
        std::size_t next[2] = {0, 0};
        for (const Sample& sample : open.samples()) {
            const std::size_t track = sample.track.info().trackId - 1;
            EXPECT_EQ(open.dataOf(sample), file.tracks[track].samples[next[track]++].data);
        }
        EXPECT_EQ(next[0], 10U);
        EXPECT_EQ(next[1], 20U);
    }
}

TEST(FragmentedTrackIteratorTest, WalksAnyRangeOfTimes) {
    const OpenIso open(fragmented(10, 3));
    EXPECT_EQ(timesOf(open.samples({0, 1000}, {400, 1000})),
              "0k 40 80 120 160 200k 240 280 320 360");
    EXPECT_EQ(timesOf(open.samples({120, 1000}, {200, 1000})), "120 160");
    EXPECT_EQ(timesOf(open.samples({121, 1000}, {241, 1000})), "160 200k 240");
    EXPECT_EQ(timesOf(open.samples({361, 1000}, {9999, 1000})), "");
    EXPECT_EQ(timesOf(open.samples({80, 1000}, {80, 1000})), "");
    // Once more from the front, when all fragments have been read.
    EXPECT_EQ(timesOf(open.samples({0, 1000}, {80, 1000})), "0k 40");
}

TEST(FragmentedTrackIteratorTest, KeepsAllSamplesWhereNoneHasADuration) {
    IsoFile file = fragmented(6, 2);
    for (IsoSample& sample : file.tracks[0].samples) sample.duration = 0;
    const OpenIso open(file);
    EXPECT_EQ(open.samples().size(), 6U);
    EXPECT_EQ(open.samples().size(), 6U);
}

TEST(FragmentedTrackIteratorTest, EndsAtADescriptionThatIsNotThere) {
    IsoFile file = fragmented(6, 2);
    file.tracks[0].samples[4].description = 2;
    file.tracks[0].samples[5].description = 2;
    EXPECT_EQ(timesOf(OpenIso(file).samples()), "0k 40 80 120");
}

TEST(FragmentedTrackIteratorTest, ReadsOnlyAsFarAsItIsAsked) {
    OpenIso open(fragmented(3000, 1));
    const std::uint64_t before = open.memory.reads;
    const auto iterator =
        open.reader.createIterator({0, 1000}, open.reader.wholeEnd(), std::vector<std::uint32_t>{});
    for (int i = 0; i < 10; ++i) iterator->next();
    EXPECT_LE(open.memory.reads - before, 2U);
}

TEST(FragmentedTrackIteratorTest, PassesOverEmptyRuns) {
    IsoFile file = fragmented(2, 2);
    Bytes bytes = file.build();
    const std::size_t trun = bytes.find("trun");
    EXPECT_EQ(timesOf(OpenIso(bytes.patched(trun + 8, u32(0))).samples()), "");
    EXPECT_EQ(timesOf(OpenIso(bytes.patched(trun + 8, u32(1))).samples()), "0k");
}

TEST(FragmentedTrackIteratorTest, TellsSyncSamplesByTwoFlags) {
    const Bytes bytes = fragmented(1, 1).build();
    const std::size_t trun = bytes.find("trun");
    const auto timesWith = [&](std::uint32_t flags) {
        return timesOf(OpenIso(bytes.patched(trun + 24, u32(flags))).samples());
    };
    EXPECT_EQ(timesWith(0), "0k");
    EXPECT_EQ(timesWith(0x02000000), "0k");
    EXPECT_EQ(timesWith(0x01000000), "0");
    EXPECT_EQ(timesWith(0x00010000), "0");
    EXPECT_EQ(timesWith(0x01010000), "0");
}

}  // namespace
}  // namespace qlix::kzm
