#include <numeric>

#include <gtest/gtest.h>

#include "kzm/ReaderSupport.h"
#include "kzs/base/ByteOrder.h"
#include "support/SampleTable.h"
#include "support/TempDir.h"

namespace qlix::kzm {
namespace {

using namespace kz::test;

std::uint32_t codeOf(const std::string& letters) {
    return torvo::kzs::loadU32(bytesOf(letters).data());
}

OpenIso open(const SampleTable& table, Edits edits = Edits::kIgnored) {
    return OpenIso(readFile(table.path), edits == Edits::kIgnored);
}

std::vector<std::size_t> allTracks(const SampleTable& table) {
    std::vector<std::size_t> numbers(table.tracks.size());
    std::iota(numbers.begin(), numbers.end(), std::size_t{0});
    return numbers;
}

void expectSample(const Sample& actual, const SampleTable& table, std::size_t track,
                  const TableSample& expected) {
    EXPECT_EQ(actual.compositionOffset, static_cast<std::uint32_t>(expected.compositionOffset));
    EXPECT_EQ(actual.size, expected.size);
    EXPECT_EQ(actual.fileOffset, expected.offset);
    EXPECT_EQ(actual.frameType() == kSampleIsSync, table.isSync(table.tracks[track], expected));
    EXPECT_EQ(actual.timescale, table.tracks[track].timescale);
    ASSERT_NE(actual.description, nullptr);
    EXPECT_EQ(actual.description->format, codeOf(table.tracks[track].format));
}

class MediaSamplesTest : public testing::TestWithParam<std::string> {
protected:
    /// Every sample of the whole file, track by track interleaved by time.
    void expectPresented(Edits edits) const {
        const SampleTable table = readSampleTable(GetParam());
        const OpenIso file = open(table, edits);
        const std::vector<PresentedSample> expected = presented(table, allTracks(table), edits);
        const std::vector<Sample> actual = file.samples();
        ASSERT_EQ(actual.size(), expected.size());
        const std::vector<Track> tracks = file.reader.tracks();
        for (std::size_t i = 0; i < actual.size(); ++i) {
            SCOPED_TRACE("sample " + std::to_string(i));
            const PresentedSample& wanted = expected[i];
            ASSERT_EQ(actual[i].track.info().trackId, tracks[wanted.track].info().trackId);
            ASSERT_EQ(actual[i].time, wanted.time);
            ASSERT_EQ(actual[i].frameType() == kSampleIsEmptyEdit, wanted.isPause);
            if (!wanted.isPause) expectSample(actual[i], table, wanted.track, wanted.sample);
        }
    }
};

TEST_P(MediaSamplesTest, TheMovieIsWhatAnotherReaderSees) {
    const SampleTable table = readSampleTable(GetParam());
    const OpenIso file = open(table);
    const DocInfo movie = file.reader.docInfo();
    EXPECT_EQ(movie.timescale, table.movieTimescale);
    EXPECT_EQ(movie.duration, table.movieDuration);
    EXPECT_EQ(movie.fragmented, table.isFragmented);
    const std::vector<Track> tracks = file.reader.tracks();
    ASSERT_EQ(tracks.size(), table.tracks.size());
    for (std::size_t i = 0; i < tracks.size(); ++i) {
        EXPECT_EQ(tracks[i].info().handler, codeOf(table.tracks[i].handler));
        EXPECT_EQ(tracks[i].info().timescale, table.tracks[i].timescale);
    }
}

TEST_P(MediaSamplesTest, EverySampleOfEachTrackIsWhatTheProbeSays) {
    const SampleTable table = readSampleTable(GetParam());
    const OpenIso file = open(table);
    const std::vector<Track> tracks = file.reader.tracks();
    ASSERT_EQ(tracks.size(), table.tracks.size());
    for (std::size_t t = 0; t < tracks.size(); ++t) {
        SCOPED_TRACE("track " + std::to_string(t));
        ASSERT_FALSE(table.tracks[t].samples.empty());
        // To a time far behind the end, so that the movie's duration cuts nothing off.
        const auto iterator =
            file.reader.createIterator({0, 1000}, {1000000, 1}, std::vector<Track>{tracks[t]});
        for (const TableSample& expected : table.tracks[t].samples) {
            ASSERT_TRUE(iterator->hasSample());
            const Sample sample = iterator->next();
            ASSERT_EQ(sample.time, expected.dts);
            expectSample(sample, table, t, expected);
        }
        EXPECT_FALSE(iterator->hasSample());
    }
}

// Media at or behind the duration of the movie are left out.
TEST_P(MediaSamplesTest, TracksAreInterleavedUpToTheDurationOfTheMovie) {
    expectPresented(Edits::kIgnored);
}

TEST_P(MediaSamplesTest, EditListsMoveAndCutTheSamples) { expectPresented(Edits::kFollowed); }

INSTANTIATE_TEST_SUITE_P(AllMovies, MediaSamplesTest, testing::ValuesIn(sampleTableNames()),
                         [](const auto& parameter) { return parameter.param; });

// The numbers were counted by hand in the tables.
TEST(MediaDurationTest, ASoundThatEndsBehindTheMovieLosesWhatLiesBehind) {
    const SampleTable table = readSampleTable("h264_aac_faststart");
    ASSERT_EQ(table.tracks[1].samples.size(), 561U);
    // The last one begins at 573440 / 44100 = 13.003 s, the movie ends at 13 s.
    EXPECT_EQ(open(table).samples({torvo::kzs::fourCc("soun")}).size(), 560U);
}

TEST(MediaDurationTest, GivesEverySampleOfTheSoundThroughItsEditList) {
    const SampleTable table = readSampleTable("h264_aac_bframes");
    ASSERT_EQ(table.tracks[1].samples.size(), 691U);
    // The first one is the priming, which the list cuts off.
    EXPECT_EQ(open(table, Edits::kFollowed).samples({torvo::kzs::fourCc("soun")}).size(), 690U);
}

TEST(MediaTablesTest, EveryMovieHasATable) {
    EXPECT_EQ(
        sampleTableNames(),
        (std::vector<std::string>{"aac_only", "ac3", "eac3", "empty_edit", "frag_base_offset",
                                  "frag_base_offset_dur", "frag_dbm", "frag_many_per_gop",
                                  "frag_many_per_gop_dur", "h264_aac_bframes", "h264_aac_faststart",
                                  "long_gop_9s", "mp3", "mpeg4p2", "text_track", "ts90000"}));
}

}  // namespace
}  // namespace qlix::kzm
