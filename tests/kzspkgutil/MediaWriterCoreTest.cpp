#include <gtest/gtest.h>

#include "Fixtures.h"
#include "WriterHarness.h"
#include "kzm/Exception.h"
#include "kzs/base/ByteOrder.h"
#include "kzspkgutil/MediaWriterCore.h"
#include "kzspkgutil/model/KZSPkgUtilException.h"

namespace torvo::kzspkgutil {
namespace {

using kz::test::aacConfig;
using kz::test::aacFrame;
using kz::test::avcConfig;
using kz::test::avcFrame;
using kz::test::Bytes;
using kz::test::fill;
using kz::test::flvTag;
using kz::test::hex;
using kz::test::hexTable;
using kz::test::raw;
using kzs::fourCc;
using test::avcBox;
using test::esdsBox;
using test::messageOf;
using test::WriterHarness;

// --- tracks

TEST(AddTrackTest, PutsTheDurationNumberInMillisecondsAsItStands) {
    const auto track = test::videoTrackOf(fourCc("avc1"), avcBox());
    track->timescale = 90000;
    track->duration = 900000;
    WriterHarness harness(*track);
    const kz::test::Segment segment = harness.finish();
    EXPECT_EQ(segment.track("vide")->timescale, 1000U);
    EXPECT_EQ(segment.track("vide")->headerDuration, 900000U);
}

TEST(AddTrackTest, KeepsTheLow32BitsOfTheDuration) {
    const auto track = test::videoTrackOf(fourCc("avc1"), avcBox());
    track->duration = 0x100000005;
    EXPECT_EQ(WriterHarness(*track).finish().track("vide")->headerDuration, 5U);
}

TEST(AddTrackTest, FillsTheTrackHeader) {
    const auto track = test::videoTrackOf(fourCc("avc1"), avcBox());
    track->trackFlags = 7;
    track->volume = 0.0F;
    WriterHarness harness(*track);
    harness.finish();
    const Bytes tkhd = test::boxIn(harness.stream.content, "tkhd");
    EXPECT_EQ(tkhd.slice(8, 4), hex("01 000007"));           // version 1, the track's flags
    EXPECT_EQ(tkhd.slice(56, 2), hex("0100"));               // volume 1.0, for video as well
    EXPECT_EQ(tkhd.slice(96, 8), hex("01400000 00f00000"));  // 320 x 240
}

TEST(AddTrackTest, NamesItsHandler) {
    WriterHarness harness(*test::audioTrackOf(fourCc("mp4a"), esdsBox()));
    harness.finish();
    const Bytes hdlr = test::boxIn(harness.stream.content, "hdlr");
    EXPECT_EQ(hdlr.slice(16, 4), kz::test::text("soun"));
    EXPECT_EQ(hdlr.slice(32, hdlr.size() - 32), kz::test::text("MainConcept") + raw({0}));
}

TEST(AddTrackTest, TakesThreeLettersOfTheLanguage) {
    const auto track = test::audioTrackOf(fourCc("mp4a"), esdsBox());
    track->language = "engx";
    WriterHarness harness(*track);
    harness.finish();
    // e, n, g are 5, 14, 7 in five bits each.
    EXPECT_EQ(test::boxIn(harness.stream.content, "mdhd").slice(40, 2), hex("15c7"));
}

TEST(AddTrackTest, TakesALanguageThatIsTooShort) {
    const auto track = test::audioTrackOf(fourCc("mp4a"), esdsBox());
    track->language = "";
    WriterHarness harness(*track);
    harness.finish();
    EXPECT_EQ(test::boxIn(harness.stream.content, "mdhd").slice(40, 2), hex("0000"));
}

TEST(AddTrackTest, ReservesTwoEditsForEachEmptyOneAndOneMore) {
    const auto track = test::videoTrackOf(fourCc("avc1"), avcBox());
    track->emptyEditCount = 3;
    WriterHarness harness(*track);
    harness.finish();
    EXPECT_EQ(test::boxIn(harness.stream.content, "elst").size(), 16U + 7 * 20);
}

TEST(AddTrackTest, ReservesRoomForTheCountOfDescriptions) {
    const auto track = test::videoTrackOf(fourCc("H263"), Bytes());
    track->descriptionCount = 3;
    track->largestDescriptionSize = 14;
    // Three times 86 + 14 bytes behind the 16 of the box's own.
    EXPECT_EQ(WriterHarness(*track).finish().track("vide")->descriptions.size(), 316U);
}

TEST(AddTrackTest, ReservesRoomForTenDescriptionsOfADataTrackWithoutACount) {
    const auto track = test::dataTrackOf(fourCc("amf0"), Bytes());
    track->descriptionCount = 0;
    EXPECT_EQ(WriterHarness(*track).finish().track("meta")->descriptions.size(), 16U + 10 * 16);
    track->descriptionCount = 2;
    EXPECT_EQ(WriterHarness(*track).finish().track("meta")->descriptions.size(), 16U + 2 * 16);
}

// --- descriptions

TEST(AddVideoDescriptionTest, CarriesTheWholeAvcBoxOfTheExtraData) {
    const auto track =
        test::videoTrackOf(fourCc("avc1"), hex("0000000a 66726565 0000") + avcBox() + hex("00"));
    track->largestDescriptionSize = 15;
    const kz::test::Segment segment = WriterHarness(*track).finish();
    EXPECT_EQ(segment.track("vide")->descriptions, hexTable(R"(
        0    00000075    size
        4    73747364    'stsd'
        8    00000000    version, flags
        12   00000001    one entry
        16   00000065    entry: size 101
        20   61766331    'avc1'
        24   000000000000
        30   0001        data reference
        32   00000000000000000000000000000000
        48   014000f0    320 x 240
        52   00480000    72 dpi
        56   00480000
        60   00000000
        64   0001        one frame a sample
        66   0a41564320436f64696e67    10, "AVC Coding"
        77   000000000000000000000000000000000000000000
        98   0018        depth 24
        100  ffff
        102  0000000f    'avcC' as it stood
        106  61766343
        110  0142001effe100
    )"));
}

TEST(AddVideoDescriptionTest, CarriesNoDataWithoutAnAvcBox) {
    const auto track = test::videoTrackOf(fourCc("avc1"), Bytes());
    const kz::test::Segment segment = WriterHarness(*track).finish();
    EXPECT_EQ(segment.track("vide")->descriptions.slice(16, 8), hex("00000056 61766331"));
}

TEST(AddVideoDescriptionTest, CarriesNoDataForOtherFormats) {
    for (const std::uint32_t format : {fourCc("mp4v"), fourCc("VP6F"), fourCc("H263")}) {
        WriterHarness harness(*test::videoTrackOf(format, avcBox()));
        EXPECT_EQ(harness.finish().track("vide")->descriptions.slice(16, 4), hex("00000056"));
    }
}

TEST(AddVideoDescriptionTest, GoesByTheFormatOfTheFactsAndStoresTheOneGiven) {
    const auto track = test::videoTrackOf(fourCc("avc1"), avcBox());
    track->descriptors.front()->format = fourCc("encv");
    const kz::test::Segment segment = WriterHarness(*track).finish();
    EXPECT_EQ(segment.track("vide")->descriptions.slice(16, 8), hex("00000065 656e6376"));
}

TEST(AddVideoDescriptionTest, PutsTheProtectionBehindTheAvcBox) {
    const auto track = test::videoTrackOf(fourCc("avc1"), avcBox());
    const auto descriptor = track->descriptors.front();
    track->descriptors.clear();
    track->largestDescriptionSize = 15 + 3;
    WriterHarness harness(*track);
    harness.core.addVideoDescription(harness.writer, harness.media, *descriptor, fourCc("encv"),
                                     raw({7, 8, 9}));
    const Bytes stsd = harness.finish().track("vide")->descriptions;
    EXPECT_EQ(stsd.slice(102, 18), avcBox() + raw({7, 8, 9}));
}

TEST(AddAudioDescriptionTest, CarriesAllExtraDataOfAac) {
    const auto track = test::audioTrackOf(fourCc("mp4a"), esdsBox());
    const kz::test::Segment segment = WriterHarness(*track).finish();
    EXPECT_EQ(segment.track("soun")->descriptions, hexTable(R"(
        0    0000005b    size
        4    73747364    'stsd'
        8    00000000
        12   00000001
        16   0000004b    entry: size 75
        20   6d703461    'mp4a'
        24   000000000000
        30   0001
        32   0000000000000000
        40   0002        channels
        42   0010        sample size
        44   00000000
        48   ac440000    44100 Hz
    )") + esdsBox());
}

TEST(AddAudioDescriptionTest, CarriesNoDataForOtherFormats) {
    WriterHarness harness(*test::audioTrackOf(fourCc(".mp3"), esdsBox()));
    EXPECT_EQ(harness.finish().track("soun")->descriptions.slice(16, 8), hex("00000024 2e6d7033"));
}

TEST(AddDataDescriptionTest, DoesNotCarryTheExtraData) {
    WriterHarness harness(*test::dataTrackOf(fourCc("amf0"), raw({1, 2, 3, 4, 5, 6, 7, 8})));
    EXPECT_EQ(harness.finish().track("meta")->descriptions, hexTable(R"(
        0    00000028    size
        4    73747364    'stsd'
        8    00000000
        12   00000001
        16   00000010    entry
        20   616d6630    'amf0'
        24   000000000000
        30   0001
        32   00000008    the room that is left
        36   736b6970    'skip'
    )"));
}

// --- sequence headers

class HeaderMessageTest : public testing::Test {
protected:
    RefCountedMemoryArena arena_;
    PackagerContext context_{arena_};
    MediaWriterCore core_{context_};
};

TEST_F(HeaderMessageTest, WrapsTheContentsOfTheAvcBox) {
    for (const std::uint32_t format : {fourCc("H264"), fourCc("h264"), fourCc("avc1")}) {
        const TCMessage header = core_.videoHeaderMessage(format, kzs::milliseconds(3),
                                                          kzs::milliseconds(0x01020304), avcBox());
        EXPECT_EQ(kz::test::bytesOf(header.getTag(), header.getTagSize()), hexTable(R"(
            0   09              video
            1   00000c          15 - 3
            4   02030401        message time
            8   000000
            11  17              key frame, AVC
            12  00000000        sequence header, composition offset 0
            16  0142001effe100  the record
            23  00000017        12 + 11
        )"));
        EXPECT_EQ(header.getSampleTime().value, 3U);
        EXPECT_EQ(header.getSampleDataOffset(), 16U);
        EXPECT_EQ(header.getSampleDataSize(), 7U);
        EXPECT_TRUE(isSequenceHeader(header));
    }
}

TEST_F(HeaderMessageTest, IsEmptyForVideoWithoutAnAvcBox) {
    const Timestamp zero;
    EXPECT_EQ(core_.videoHeaderMessage(fourCc("mp4v"), zero, zero, avcBox()).getTagSize(), 0U);
    EXPECT_EQ(core_.videoHeaderMessage(fourCc("encv"), zero, zero, avcBox()).getTagSize(), 0U);
    EXPECT_EQ(core_.videoHeaderMessage(fourCc("avc1"), zero, zero, Blob()).getTagSize(), 0U);
    EXPECT_EQ(core_.videoHeaderMessage(fourCc("avc1"), zero, zero, esdsBox()).getTagSize(), 0U);
}

TEST_F(HeaderMessageTest, TakesAnEmptyAvcBox) {
    const TCMessage header = core_.videoHeaderMessage(fourCc("avc1"), Timestamp(), Timestamp(),
                                                      hex("00000008 61766343"));
    EXPECT_EQ(kz::test::bytesOf(header.getTag(), header.getTagSize()),
              hex("09 000005 00000000 000000 17 00000000 00000010"));
    EXPECT_EQ(header.getSampleDataSize(), 0U);
}

TEST_F(HeaderMessageTest, WrapsTheAacConfiguration) {
    const TCMessage header = core_.audioHeaderMessage(fourCc("mp4a"), kzs::milliseconds(3),
                                                      kzs::milliseconds(5), esdsBox());
    EXPECT_EQ(kz::test::bytesOf(header.getTag(), header.getTagSize()), hexTable(R"(
        0   08          audio
        1   000004      2 + 2
        4   00000500    message time
        8   000000
        11  af00        AAC, sequence header
        13  1210        configuration
        15  0000000f    4 + 11
    )"));
    EXPECT_EQ(header.getSampleTime().value, 3U);
    EXPECT_EQ(header.getSampleDataOffset(), 13U);
    EXPECT_EQ(header.getSampleDataSize(), 2U);
    EXPECT_TRUE(isSequenceHeader(header));
}

TEST_F(HeaderMessageTest, IsEmptyForAudioWithoutAConfiguration) {
    const Timestamp zero;
    const Bytes withoutTag5 = esdsBox().patched(32, raw({6}));
    EXPECT_EQ(core_.audioHeaderMessage(fourCc("mp4a"), zero, zero, withoutTag5).getTagSize(), 0U);
    EXPECT_EQ(core_.audioHeaderMessage(fourCc("mp4a"), zero, zero, Blob()).getTagSize(), 0U);
    EXPECT_EQ(core_.audioHeaderMessage(fourCc(".mp3"), zero, zero, esdsBox()).getTagSize(), 0U);
}

TEST_F(HeaderMessageTest, IsANewBlockEachTime) {
    const Timestamp zero;
    const TCMessage first = core_.audioHeaderMessage(fourCc("mp4a"), zero, zero, esdsBox());
    const TCMessage second = core_.audioHeaderMessage(fourCc("mp4a"), zero, zero, esdsBox());
    EXPECT_NE(first.getTag(), second.getTag());
}

TEST_F(HeaderMessageTest, RefusesABoxThatNoTagCanHold) {
    const Bytes box = kz::test::u32(0x1000003) + kz::test::text("avcC") + fill(0x1000003 - 8, 0);
    EXPECT_THROW(core_.videoHeaderMessage(fourCc("avc1"), Timestamp(), Timestamp(), box),
                 KZSPkgUtilException);
}

TEST(SequenceHeaderTest, IsAnAvcOrAacTagWithPacketType0) {
    EXPECT_TRUE(isSequenceHeader(messageOf(avcConfig(0), 5)));
    EXPECT_TRUE(isSequenceHeader(messageOf(aacConfig(0), 2)));
    EXPECT_FALSE(isSequenceHeader(messageOf(avcFrame(0, true, raw({1})), 5)));
    EXPECT_FALSE(isSequenceHeader(messageOf(kz::test::avcEnd(0), 5)));
    EXPECT_FALSE(isSequenceHeader(messageOf(aacFrame(0, raw({1})), 2)));
    EXPECT_FALSE(isSequenceHeader(messageOf(flvTag(9, 0, raw({0x12, 0})), 1)));
    EXPECT_FALSE(isSequenceHeader(messageOf(flvTag(8, 0, raw({0x2F, 0})), 1)));
    EXPECT_FALSE(isSequenceHeader(messageOf(flvTag(18, 0, raw({0xAF, 0})), 0)));
    EXPECT_FALSE(isSequenceHeader(TCMessage()));
}

TEST(SequenceHeaderTest, IsNoTagThatIsTooShortForAPacketType) {
    EXPECT_FALSE(isSequenceHeader(messageOf(flvTag(9, 0, raw({0x17})), 0)));
    EXPECT_FALSE(isSequenceHeader(messageOf(flvTag(8, 0, raw({0xAF})), 0)));
    EXPECT_FALSE(isSequenceHeader(messageOf(flvTag(8, 0, Bytes()), 0)));
}

}  // namespace
}  // namespace torvo::kzspkgutil
