#include <cstdint>
#include <vector>

#include <gtest/gtest.h>

#include "kzm/ReaderSupport.h"

namespace qlix::kzm {
namespace {

using namespace kz::test;

TEST(SampleDataTest, ReadsTheBytesOfEverySample) {
    for (const bool isMoovFirst : {true, false}) {
        IsoFile file;
        file.isMoovFirst = isMoovFirst;
        file.tracks = {isoVideoTrack(1, 30)};
        // Below, at and above the size of a page, and over several of them.
        for (const std::size_t size : {4095, 4096, 4097, 1, 20000, 3000, 3000, 3000}) {
            IsoSample sample;
            sample.data = pattern(size, static_cast<unsigned>(size));
            file.tracks[0].samples.push_back(sample);
        }
        const OpenIso open(file);
        const std::vector<Sample> samples = open.samples();
        ASSERT_EQ(samples.size(), file.tracks[0].samples.size());
        for (std::size_t i = 0; i < samples.size(); ++i) {
            EXPECT_EQ(open.dataOf(samples[i]), file.tracks[0].samples[i].data) << i;
        }
        for (std::size_t i = samples.size(); i-- > 0;) {
            EXPECT_EQ(open.dataOf(samples[i]), file.tracks[0].samples[i].data) << i;
        }
    }
}

TEST(SampleDataTest, ReadsSmallNeighboursWithOneReadOfThePage) {
    IsoFile file;
    file.tracks = {isoVideoTrack(1, 100)};
    OpenIso open(file);
    const std::vector<Sample> samples = open.samples();
    const std::uint64_t before = open.memory.reads;
    for (const Sample& sample : samples) open.dataOf(sample);
    // The last page is shorter than asked, which takes a second read to see.
    EXPECT_LE(open.memory.reads - before, 2U);
}

TEST(SampleDataTest, ReadsAPageOnceForTracksThatLieFarApart) {
    IsoFile file;
    file.tracks = {isoVideoTrack(1, 200, 20), isoAudioTrack(2, 200)};
    for (IsoTrack& track : file.tracks) {
        track.samplesPerChunk = 200;
        for (IsoSample& sample : track.samples) sample.data = pattern(100, track.id);
    }
    OpenIso open(file);
    const std::vector<Sample> samples = open.samples();
    const std::uint64_t before = open.memory.reads;
    for (const Sample& sample : samples) {
        EXPECT_EQ(open.dataOf(sample), pattern(100, sample.track.info().trackId));
    }
    // Five pages for each track; to see that the last one is short takes another read.
    EXPECT_LE(open.memory.reads - before, 12U);
}

TEST(SampleDataTest, ReadsTheBytesOfManyTracksInTurn) {
    IsoFile file;
    for (std::uint32_t id = 1; id <= 70; ++id) file.tracks.push_back(isoVideoTrack(id, 2));
    const OpenIso open(file);
    std::size_t count = 0;
    for (const Sample& sample : open.samples()) {
        const IsoTrack& track = file.tracks[sample.track.info().trackId - 1];
        EXPECT_EQ(open.dataOf(sample), track.samples[sample.time / 40].data);
        ++count;
    }
    EXPECT_EQ(count, 140U);
}

TEST(SampleDataTest, RefusesTheBytesOfASampleInFrontOfTheMediaData) {
    const OpenIso open(twoTracks());
    Sample sample = open.samples().front();
    sample.fileOffset = 8;
    EXPECT_EQ(codeThrownBy([&] { open.dataOf(sample); }), 1030U);
}

TEST(SampleDataTest, ReadsTheBytesOfASampleOnceMoreAfterAFailure) {
    OpenIso open(twoTracks());
    const Sample sample = open.samples().front();
    const Bytes expected = OpenIso(twoTracks()).dataOf(sample);
    open.memory.failAtCall = open.memory.calls;
    open.memory.failure = 3;
    EXPECT_EQ(codeThrownBy([&] { open.dataOf(sample); }), 3U);
    EXPECT_EQ(open.dataOf(sample), expected);
}

TEST(SampleDataTest, RefusesTheBytesOfASampleBehindTheEnd) {
    const OpenIso open(twoTracks());
    for (const std::uint32_t size : {100U, 5000U}) {
        Sample sample = open.samples().front();
        sample.fileOffset = open.memory.content.size() - 50;
        sample.size = size;
        EXPECT_EQ(codeThrownBy([&] { open.dataOf(sample); }), 1030U);
        sample.fileOffset = 0x7FFFFFFFFFFFF000;
        EXPECT_EQ(codeThrownBy([&] { open.dataOf(sample); }), 1030U);
    }
}

TEST(SampleDataTest, ReadsNothingForASampleOfNoBytes) {
    const OpenIso open(twoTracks());
    const std::uint64_t before = open.memory.calls;
    open.reader.sampleData(Sample(), nullptr);
    EXPECT_EQ(open.memory.calls, before);
}

}  // namespace
}  // namespace qlix::kzm
