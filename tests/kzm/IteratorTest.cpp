#include <gtest/gtest.h>

#include "kzm/ReaderSupport.h"
#include "kzs/base/ByteOrder.h"
#include "support/IsoBuilder.h"

namespace qlix::kzm {
namespace {

using namespace kz::test;
using torvo::kzs::fourCc;

IsoFile oneTrack(unsigned count, std::uint32_t duration = 40, unsigned syncEvery = 5) {
    IsoFile file;
    file.tracks = {isoVideoTrack(1, count, duration, syncEvery)};
    return file;
}

IsoFile fragmented(unsigned count, unsigned perFragment) {
    IsoFile file = oneTrack(count);
    file.samplesPerFragment = perFragment;
    return file;
}

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

TEST(TrackIteratorTest, ThrowsTwentyWhenAskedBeyondTheEnd) {
    const OpenIso open(oneTrack(1));
    const auto iterator =
        open.reader.createIterator({0, 1000}, {100, 1000}, std::vector<std::uint32_t>{});
    iterator->next();
    EXPECT_FALSE(iterator->hasSample());
    EXPECT_EQ(codeThrownBy([&] { iterator->next(); }), 20U);
}

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

TEST(DocIteratorTest, InterleavesByTimeAndGivesTiesToTheFirstTrack) {
    IsoFile file;
    file.tracks = {isoVideoTrack(1, 3, 40, 1), isoAudioTrack(2, 4, 20)};
    const OpenIso open(file);
    const auto order = [&](const std::vector<std::uint32_t>& handlers) {
        std::string out;
        for (const Sample& sample : open.samples(handlers)) {
            out +=
                (sample.handler == fourCc("vide") ? "v" : "a") + std::to_string(sample.time) + " ";
        }
        return out;
    };
    EXPECT_EQ(order({}), "v0 a0 a20 v40 a40 a60 v80 ");
    EXPECT_EQ(order({fourCc("soun"), fourCc("vide")}), "a0 v0 a20 a40 v40 a60 v80 ");
    EXPECT_EQ(order({fourCc("vide")}), "v0 v40 v80 ");
}

TEST(DocIteratorTest, TakesTracksInTheGivenOrder) {
    IsoFile file;
    file.tracks = {isoVideoTrack(1, 1), isoVideoTrack(2, 1)};
    const OpenIso open(file);
    const std::vector<Track> tracks = open.reader.tracks();
    const auto iterator = open.reader.createIterator({0, 1000}, open.reader.wholeEnd(),
                                                     std::vector<Track>{tracks[1], tracks[0]});
    EXPECT_EQ(iterator->next().track.info().trackId, 2U);
    EXPECT_EQ(iterator->next().track.info().trackId, 1U);
    EXPECT_FALSE(iterator->hasSample());
}

TEST(DocIteratorTest, TakesAllTracksForAnEmptySelection) {
    IsoFile file;
    file.tracks = {isoVideoTrack(1, 1), isoVideoTrack(2, 1)};
    const OpenIso open(file);
    const auto iterator =
        open.reader.createIterator({0, 1000}, open.reader.wholeEnd(), std::vector<Track>{});
    iterator->next();
    EXPECT_EQ(iterator->next().track.info().trackId, 2U);
}

TEST(DocIteratorTest, ComparesTimesOfDifferentTimescalesExactly) {
    // 3001 / 90000 s is behind 33 ms and 2970 / 90000 s is exactly 33 ms.
    IsoFile file;
    file.tracks = {isoVideoTrack(1, 3, 2970, 1), isoAudioTrack(2, 3, 33)};
    file.tracks[0].timescale = 90000;
    file.tracks[0].samples[1].duration = 2971;
    const OpenIso open(file);
    std::string out;
    for (const Sample& sample : open.samples()) {
        out += std::to_string(sample.track.info().trackId);
    }
    EXPECT_EQ(out, "121221");
}

TEST(DocIteratorTest, DropsATrackWithoutASampleInTheRange) {
    IsoFile file;
    file.tracks = {isoVideoTrack(1, 3), isoAudioTrack(2, 0)};
    EXPECT_EQ(OpenIso(file).samples().size(), 3U);
    EXPECT_EQ(OpenIso(file).samples({0, 1000}, {0, 1000}).size(), 0U);
}

TEST(DocIteratorTest, HasNoMoreSamplesOfATrackThanTheFileHasBytes) {
    // One row of each table claims 50 million samples of one byte that lie on the same bytes.
    IsoFile file = oneTrack(1, 0);
    file.tracks[0].samples[0].data = u8(1);
    file.tracks[0].fixedSize = 1;
    Bytes bytes = file.build();
    const auto patch = [&](const char* type, std::size_t offset, std::uint64_t value) {
        const std::size_t at = bytes.find(type);
        bytes = bytes.patched(at + offset, u32(value));
    };
    patch("stts", 12, 50'000'000);
    patch("stsz", 12, 50'000'000);
    patch("stsc", 16, 50'000'000);
    EXPECT_EQ(OpenIso(bytes).samples().size(), bytes.size());
}

}  // namespace
}  // namespace qlix::kzm
