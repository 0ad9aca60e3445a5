#include <algorithm>
#include <optional>
#include <type_traits>

#include <gtest/gtest.h>

#include "KZSMediaWriterFixture.h"
#include "WriterHarness.h"
#include "kzs/base/Clock.h"
#include "support/ThrownCode.h"

namespace torvo::kzspkgutil {
namespace {

using kz::test::Bytes;
using kz::test::codeThrownBy;
using kz::test::hex;
using kz::test::raw;
using kz::test::Segment;
using kzs::fourCc;
using test::avcBox;
using test::esdsBox;

static_assert(!std::has_virtual_destructor<IMediaWriter>::value,
              "the interface has two operations and no destructor slot");

using KZSMediaWriterTest = test::KZSMediaWriterFixture;

TEST_F(KZSMediaWriterTest, MakesOneTrackOfEachKindInTheOrderOfTheSource) {
    open({test::dataTrackOf(fourCc("amf0"), Bytes()), test::audioTrackOf(fourCc("mp4a"), esdsBox()),
          test::videoTrackOf(fourCc("avc1"), avcBox()),
          test::videoTrackOf(fourCc("VP6F"), Bytes())});
    const Segment segment = close();
    ASSERT_EQ(segment.tracks.size(), 4U);
    EXPECT_EQ(segment.tracks[0].handler, "meta");
    EXPECT_EQ(segment.tracks[1].handler, "soun");
    EXPECT_EQ(segment.tracks[2].handler, "vide");
    EXPECT_EQ(segment.tracks[2].descriptionFormats.front(), "avc1");
    EXPECT_EQ(segment.tracks[3].handler, "hint");
    EXPECT_EQ(segment.tracks[3].hintedTracks, (std::vector<std::uint32_t>{1, 2, 3}));
}

TEST_F(KZSMediaWriterTest, PassesOverTracksOfOtherHandlers) {
    const auto odd = test::videoTrackOf(fourCc("avc1"), avcBox());
    odd->handler = fourCc("subt");
    open({odd, test::audioTrackOf(fourCc("mp4a"), esdsBox())});
    const Segment segment = close();
    ASSERT_EQ(segment.tracks.size(), 2U);
    EXPECT_EQ(segment.tracks[0].handler, "soun");
}

TEST_F(KZSMediaWriterTest, DescribesTheHintTrack) {
    openVideo();
    const Segment segment = close();
    const kz::test::PackedTrack& hint = *segment.track("hint");
    EXPECT_EQ(hint.timescale, 1000U);
    EXPECT_EQ(hint.descriptions.slice(16, 38), kz::test::hexTable(R"(
        0   00000026            size 38
        4   72746d70            'rtmp'
        8   000000000000
        14  0001                data reference
        16  0001                hint track version
        18  0001                highest compatible version
        20  01f4                packets of 500 bytes
        22  00000010            'amhp'
        26  616d6870
        30  0000000001010004    one entry: 1, 0, 4
    )"));
}

TEST_F(KZSMediaWriterTest, LeavesRoomInTheHintTrackForEditsAndDescriptions) {
    open({});
    // Two rows for each of 1000 empty edits and one more, behind 16 bytes of header and count.
    EXPECT_EQ(test::boxIn(stream_.content, "elst").size(), 16U + 2001 * 20);
    // One entry of 22 bytes and 1024 for its data, behind 16 bytes of header and count.
    EXPECT_EQ(test::boxIn(stream_.content, "stsd").size(), 16U + 22 + 1024);
}

TEST_F(KZSMediaWriterTest, DatesMovieAndTracksByTheClock) {
    kzs::setClockForTests(86400);  // a day behind 1970, which is 2082844800 seconds behind 1904
    openVideo();
    kzs::setClockForTests(std::nullopt);
    const Bytes twice = kz::test::u64(2082931200) + kz::test::u64(2082931200);
    EXPECT_EQ(test::boxIn(stream_.content, "mvhd").slice(12, 16), twice);
    std::size_t dated = 0;
    for (auto from = stream_.content.begin();; ++dated) {
        from = std::search(from, stream_.content.end(), twice.begin(), twice.end());
        if (from == stream_.content.end()) break;
        from += static_cast<std::ptrdiff_t>(twice.size());
    }
    EXPECT_EQ(dated, 5U);  // the movie, and the two headers of each track
}

TEST_F(KZSMediaWriterTest, NamesTheHandlerOfTheHintTrack) {
    open({});
    const Bytes hdlr = test::boxIn(stream_.content, "hdlr");
    EXPECT_EQ(hdlr.slice(16, 4), kz::test::text("hint"));
    EXPECT_EQ(hdlr.slice(32, hdlr.size() - 32),
              kz::test::text("Varnholt Systems Inc. Hint Handler") + raw({0}));
    EXPECT_EQ(hdlr.size() - 32, 35U);
}

TEST_F(KZSMediaWriterTest, GivesTheHintTrackTheLanguageOfTheVideoTrack) {
    const auto video = test::videoTrackOf(fourCc("avc1"), avcBox());
    const auto audio = test::audioTrackOf(fourCc("mp4a"), esdsBox());
    video->language = "deu";
    audio->language = "fra";
    // Three letters of five bits each; the hint track's header is the last.
    const auto lastLanguage = [this] {
        const Bytes name = kz::test::text("mdhd");
        const auto hit =
            std::find_end(stream_.content.begin(), stream_.content.end(), name.begin(), name.end());
        return stream_.content.slice(
            static_cast<std::size_t>(hit - stream_.content.begin()) - 4 + 40, 2);
    };
    open({video, audio});
    EXPECT_EQ(lastLanguage(), hex("10b5"));  // d, e, u: 4, 5, 21
    stream_.content.clear();
    open({audio});
    EXPECT_EQ(lastLanguage(), hex("15c7"));  // e, n, g: 5, 14, 7
}

TEST_F(KZSMediaWriterTest, NeverRaisesTheVolumeOfTheMovieAbove1) {
    MediaProperties properties;
    properties.volume = 1.5F;
    properties.rate = 2.0F;
    open({}, properties);
    const Bytes mvhd = test::boxIn(stream_.content, "mvhd");
    EXPECT_EQ(mvhd.slice(40, 6), hex("00020000 0100"));  // rate 2.0, volume 1.0

    stream_.content.clear();
    properties.volume = 0.5F;
    open({}, properties);
    EXPECT_EQ(test::boxIn(stream_.content, "mvhd").slice(44, 2), hex("0080"));
}

TEST_F(KZSMediaWriterTest, TakesTheTimescaleOfTheSource) {
    MediaProperties properties;
    properties.timescale = 600;
    properties.duration = 6000;
    open({}, properties);
    const Segment segment = close();
    EXPECT_EQ(segment.movieTimescale, 600U);
    EXPECT_EQ(segment.movieDuration, 0U);
}

TEST_F(KZSMediaWriterTest, RefusesATimescaleOf0) {
    MediaProperties properties;
    properties.timescale = 0;
    EXPECT_EQ(codeThrownBy([&] { open({}, properties); }), 10U);
}

TEST_F(KZSMediaWriterTest, TellsTheSourcesPropertiesAndNoTracks) {
    MediaProperties properties;
    properties.duration = 1234;
    const KZSMediaWriter& writer = open({test::videoTrackOf(fourCc("avc1"), avcBox())}, properties);
    EXPECT_EQ(writer.getProperties().duration, 1234U);
    EXPECT_FALSE(writer.getTracks()->hasNext());
}

}  // namespace
}  // namespace torvo::kzspkgutil
