#include <fstream>
#include <map>
#include <sstream>

#include <gtest/gtest.h>

#include "kzm/ReaderSupport.h"
#include "kzs/base/ByteOrder.h"
#include "support/TempDir.h"

namespace qlix::kzm {
namespace {

using namespace kz::test;

// What an outside probe says of a sample; the command stands in the first line of each table.
struct Probed {
    std::int64_t pts = 0;
    std::int64_t dts = 0;
    std::uint32_t size = 0;
    std::uint64_t position = 0;
    bool isKey = false;
};

std::map<std::size_t, std::vector<Probed>> probed(const std::string& name) {
    std::ifstream in(KZ_TEST_DATA_DIR "/samples/" + name + ".txt");
    std::map<std::size_t, std::vector<Probed>> tracks;
    for (std::string line; std::getline(in, line);) {
        if (line[0] == '#') continue;
        std::istringstream fields(line);
        std::size_t track = 0;
        Probed row;
        char comma = 0;
        fields >> track >> comma >> row.pts >> comma >> row.dts >> comma >> row.size >> comma >>
            row.position;
        row.isKey = line.back() == 'K';
        tracks[track].push_back(row);
    }
    return tracks;
}

class MediaSamplesTest : public testing::TestWithParam<const char*> {};

TEST_P(MediaSamplesTest, AgreesWithTheProbeOnEverySample) {
    const auto expected = probed(GetParam());
    ASSERT_FALSE(expected.empty());
    const OpenIso open(readFile(std::string(KZ_TEST_DATA_DIR "/media/") + GetParam() + ".mp4"));
    const std::vector<Track> tracks = open.reader.tracks();
    ASSERT_EQ(tracks.size(), expected.size());
    for (std::size_t t = 0; t < tracks.size(); ++t) {
        SCOPED_TRACE("track " + std::to_string(t));
        const std::vector<Probed>& rows = expected.at(t);
        const auto iterator =
            open.reader.createIterator({0, 1000}, {1000000, 1}, std::vector<Track>{tracks[t]});
        for (std::size_t i = 0; i < rows.size(); ++i) {
            SCOPED_TRACE("sample " + std::to_string(i));
            ASSERT_TRUE(iterator->hasSample());
            const Sample sample = iterator->next();
            EXPECT_EQ(sample.time, static_cast<std::uint64_t>(rows[i].dts));
            EXPECT_EQ(static_cast<std::int32_t>(sample.compositionOffset),
                      rows[i].pts - rows[i].dts);
            EXPECT_EQ(sample.size, rows[i].size);
            EXPECT_EQ(sample.fileOffset, rows[i].position);
            if (sample.handler == torvo::kzs::fourCc("vide")) {
                EXPECT_EQ(sample.frameType() == kSampleIsSync, rows[i].isKey);
            }
        }
        EXPECT_FALSE(iterator->hasSample());
    }
}

INSTANTIATE_TEST_SUITE_P(Shared, MediaSamplesTest,
                         testing::Values("h264_aac_bframes", "h264_aac_faststart",
                                         "frag_base_offset", "frag_dbm", "frag_many_per_gop_dur",
                                         "empty_edit", "ts90000", "text_track"),
                         [](const testing::TestParamInfo<const char*>& file) {
                             return std::string(file.param);
                         });

// A last sample of sound often lies behind the duration of the movie, since its media begins with
// priming that only an edit list cuts off.
TEST(MediaDurationTest, LosesNoSampleThatStartsBeforeTheEndOfTheMovie) {
    for (const char* name : {"h264_aac_bframes", "h264_aac_faststart", "frag_base_offset",
                             "frag_dbm", "frag_many_per_gop_dur", "empty_edit", "ts90000"}) {
        SCOPED_TRACE(name);
        const OpenIso open(readFile(std::string(KZ_TEST_DATA_DIR "/media/") + name + ".mp4"));
        const std::uint64_t durationMs = open.reader.docInfo().duration;
        std::size_t count = 0;
        for (const auto& [track, rows] : probed(name)) {
            const std::uint64_t timescale = open.reader.tracks()[track].info().timescale;
            for (const Probed& row : rows) {
                const auto dts = static_cast<std::uint64_t>(row.dts);
                if (durationMs == 0 || dts * 1000 < durationMs * timescale) ++count;
            }
        }
        EXPECT_EQ(open.samples().size(), count);
    }
}

TEST(MediaDurationTest, GivesEverySampleOfTheSoundThroughItsEditList) {
    const OpenIso open(readFile(KZ_TEST_DATA_DIR "/media/h264_aac_bframes.mp4"), false);
    // The first one is the priming, which the list cuts off.
    EXPECT_EQ(open.samples({torvo::kzs::fourCc("soun")}).size(),
              probed("h264_aac_bframes").at(1).size() - 1);
}

}  // namespace
}  // namespace qlix::kzm
