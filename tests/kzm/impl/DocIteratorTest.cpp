#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "kzm/ReaderSupport.h"
#include "kzs/base/ByteOrder.h"
#include "support/IsoBuilder.h"

namespace qlix::kzm {
namespace {

using namespace kz::test;
using torvo::kzs::fourCc;

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
