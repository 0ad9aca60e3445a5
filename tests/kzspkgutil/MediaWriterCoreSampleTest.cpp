#include <set>

#include <gtest/gtest.h>

#include "Fixtures.h"
#include "WriterHarness.h"
#include "kzm/Exception.h"
#include "kzs/base/ByteOrder.h"
#include "kzspkgutil/MediaWriterCore.h"

namespace torvo::kzspkgutil {
namespace {

using kz::test::aacConfig;
using kz::test::aacFrame;
using kz::test::avcConfig;
using kz::test::avcFrame;
using kz::test::Bytes;
using kz::test::FlvTag;
using kz::test::flvTag;
using kz::test::hex;
using kz::test::PackedFragment;
using kz::test::PackedSample;
using kz::test::pattern;
using kz::test::raw;
using kzs::fourCc;
using test::kOtherFlags;
using test::kSyncFlags;
using test::messageOf;
using test::WriterHarness;

constexpr std::uint32_t kMedia = 1;
constexpr std::uint32_t kHint = 2;

class WriteVideoTest : public testing::Test {
protected:
    void write(const FlvTag& tag, std::uint32_t headerSize) {
        harness_.core.writeVideo(harness_.writer, harness_.hint, harness_.media,
                                 messageOf(tag, headerSize));
    }

    WriterHarness harness_{*test::videoTrackOf(fourCc("avc1"), test::avcBox())};
};

TEST_F(WriteVideoTest, PutsAnAvcKeyFrameInBothTracksAndNotInTheIndex) {
    const FlvTag tag = avcFrame(40, true, pattern(30, 1), 80);
    write(tag, 5);
    const kz::test::Segment segment = harness_.finish();
    const PackedFragment& fragment = segment.fragments.at(0);

    ASSERT_EQ(fragment.samples.at(kHint).size(), 1U);
    const PackedSample& hint = fragment.samples.at(kHint).front();
    EXPECT_EQ(test::bytesOf(segment, hint), tag.image());
    EXPECT_EQ(hint.flags, kSyncFlags);
    EXPECT_EQ(hint.compositionOffset, 80);

    ASSERT_EQ(fragment.samples.at(kMedia).size(), 1U);
    const PackedSample& media = fragment.samples.at(kMedia).front();
    EXPECT_EQ(test::bytesOf(segment, media), pattern(30, 1));
    EXPECT_EQ(media.offset, hint.offset + 16);
    EXPECT_EQ(media.flags, kSyncFlags);
    EXPECT_EQ(media.compositionOffset, 80);

    EXPECT_TRUE(fragment.afra.local.empty());
}

TEST_F(WriteVideoTest, PutsAnAvcSequenceHeaderInTheHintTrackAndTheIndex) {
    const FlvTag tag = avcConfig(40);
    write(tag, 5);
    const kz::test::Segment segment = harness_.finish();
    const PackedFragment& fragment = segment.fragments.at(0);

    ASSERT_EQ(fragment.samples.at(kHint).size(), 1U);
    const PackedSample& hint = fragment.samples.at(kHint).front();
    EXPECT_EQ(test::bytesOf(segment, hint), tag.image());
    EXPECT_EQ(hint.flags, kSyncFlags);
    EXPECT_EQ(fragment.samples.count(kMedia), 0U);

    ASSERT_EQ(fragment.afra.local.size(), 1U);
    EXPECT_EQ(fragment.afra.local.front().time, 40U);
    EXPECT_EQ(fragment.afra.local.front().offset, hint.offset - fragment.offset);
}

TEST_F(WriteVideoTest, LeavesOtherAvcFramesOutOfTheIndex) {
    write(avcFrame(0, false, raw({1})), 5);
    const PackedFragment fragment = harness_.finishFragment();
    EXPECT_EQ(fragment.samples.at(kHint).front().flags, kOtherFlags);
    EXPECT_EQ(fragment.samples.at(kMedia).front().flags, kOtherFlags);
    EXPECT_TRUE(fragment.afra.local.empty());
}

TEST_F(WriteVideoTest, ReadsTheCompositionOffsetAsASignedNumber) {
    write(avcFrame(0, false, raw({1}), -40), 5);
    const PackedFragment fragment = harness_.finishFragment();
    EXPECT_EQ(fragment.samples.at(kHint).front().compositionOffset, -40);
    EXPECT_EQ(fragment.samples.at(kMedia).front().compositionOffset, -40);
}

TEST_F(WriteVideoTest, HasNoCompositionOffsetInABodyOfFourBytes) {
    write(flvTag(9, 0, hex("27 01 123456")), 5);
    write(flvTag(9, 10, hex("27 01 1234")), 4);
    const PackedFragment fragment = harness_.finishFragment();
    EXPECT_EQ(fragment.samples.at(kHint).at(0).compositionOffset, 0x123456);
    EXPECT_EQ(fragment.samples.at(kHint).at(1).compositionOffset, 0);
}

TEST_F(WriteVideoTest, TakesAnAvcBodyOfOneByteForAFrame) {
    write(flvTag(9, 0, hex("17")), 1);
    const PackedFragment fragment = harness_.finishFragment();
    EXPECT_EQ(fragment.samples.at(kHint).size(), 1U);
    EXPECT_EQ(fragment.samples.at(kMedia).front().size, 0U);
    EXPECT_TRUE(fragment.afra.local.empty());
}

TEST_F(WriteVideoTest, GivesAnEndOfSequenceAnEmptyMediaSample) {
    write(kz::test::avcEnd(40), 5);
    const PackedFragment fragment = harness_.finishFragment();
    EXPECT_EQ(fragment.samples.at(kHint).front().size, 20U);
    EXPECT_EQ(fragment.samples.at(kMedia).front().size, 0U);
}

TEST_F(WriteVideoTest, PutsKeyFramesOfH263AndVp6InTheIndex) {
    const int codecs[] = {2, 4, 5};
    std::uint32_t time = 0;
    for (const int codec : codecs) write(flvTag(9, time += 10, raw({0x10 + codec, 0, 9})), 1);
    for (const int codec : codecs) write(flvTag(9, time += 10, raw({0x20 + codec, 0, 9})), 1);
    const PackedFragment fragment = harness_.finishFragment();

    ASSERT_EQ(fragment.samples.at(kHint).size(), 6U);
    ASSERT_EQ(fragment.samples.at(kMedia).size(), 6U);
    for (std::size_t i = 0; i < 6; ++i) {
        const std::uint32_t flags = i < 3 ? kSyncFlags : kOtherFlags;
        EXPECT_EQ(fragment.samples.at(kHint)[i].flags, flags);
        EXPECT_EQ(fragment.samples.at(kMedia)[i].flags, flags);
        EXPECT_EQ(fragment.samples.at(kHint)[i].compositionOffset, 0);
    }
    ASSERT_EQ(fragment.afra.local.size(), 3U);
    EXPECT_EQ(fragment.afra.local[0].time, 10U);
    EXPECT_EQ(fragment.afra.local[1].time, 20U);
    EXPECT_EQ(fragment.afra.local[2].time, 30U);
}

TEST_F(WriteVideoTest, CountsOnlyFrameType1AsAKeyFrame) {
    write(flvTag(9, 0, raw({0x32, 0})), 1);  // a disposable frame
    write(flvTag(9, 1, raw({0x42, 0})), 1);  // a generated key frame
    const PackedFragment fragment = harness_.finishFragment();
    EXPECT_EQ(fragment.samples.at(kHint).at(0).flags, kOtherFlags);
    EXPECT_EQ(fragment.samples.at(kHint).at(1).flags, kOtherFlags);
    EXPECT_TRUE(fragment.afra.local.empty());
}

TEST_F(WriteVideoTest, DropsOtherCodecs) {
    const std::set<int> written = {2, 4, 5, 7};
    for (int codec = 0; codec < 16; ++codec) {
        if (written.count(codec) == 0) write(flvTag(9, 0, raw({0x10 + codec, 1, 0, 0, 0})), 1);
    }
    write(flvTag(9, 0, Bytes()), 0);
    EXPECT_TRUE(harness_.finish().fragments.empty());
}

TEST_F(WriteVideoTest, TakesTheTimeOfTheSampleAndNotOfTheMessage) {
    harness_.core.writeVideo(
        harness_.writer, harness_.hint, harness_.media,
        messageOf(avcConfig(0), 5, kzs::milliseconds(700), kzs::milliseconds(900)));
    EXPECT_EQ(harness_.finishFragment().afra.local.at(0).time, 700U);
}

TEST_F(WriteVideoTest, SharesTheBlockUntilTheFragmentIsInTheFile) {
    const TCMessage message = messageOf(avcFrame(0, true, raw({1, 2})), 5);
    const TCMessage header = messageOf(avcConfig(0), 5);
    harness_.core.writeVideo(harness_.writer, harness_.hint, harness_.media, header);
    harness_.core.writeVideo(harness_.writer, harness_.hint, harness_.media, message);
    EXPECT_EQ(test::ownersOf(header), 2U);
    EXPECT_EQ(test::ownersOf(message), 2U);
    harness_.writer.startFragment();
    EXPECT_EQ(test::ownersOf(header), 1U);
    EXPECT_EQ(test::ownersOf(message), 1U);
}

TEST_F(WriteVideoTest, GivesTheBlockBackWhenTheWriterRefuses) {
    const TCMessage message = messageOf(avcFrame(0, true, raw({1, 2})), 5);
    EXPECT_THROW(
        harness_.core.writeVideo(harness_.writer, harness_.hint, qlix::kzm::TrackHandle(), message),
        qlix::kzm::Exception);
    harness_.writer.close();
    EXPECT_EQ(test::ownersOf(message), 1U);
}

class WriteAudioTest : public testing::Test {
protected:
    void write(const FlvTag& tag, std::uint32_t headerSize, bool indexed) {
        harness_.core.writeAudio(harness_.writer, harness_.hint, harness_.media,
                                 messageOf(tag, headerSize), indexed);
    }

    WriterHarness harness_{*test::audioTrackOf(fourCc("mp4a"), test::esdsBox())};
};

TEST_F(WriteAudioTest, PutsASequenceHeaderInTheHintTrackAndNeverInTheIndex) {
    write(aacConfig(0), 2, true);
    write(aacConfig(0), 2, false);
    const PackedFragment fragment = harness_.finishFragment();
    ASSERT_EQ(fragment.samples.at(kHint).size(), 2U);
    EXPECT_EQ(fragment.samples.at(kHint).front().flags, kSyncFlags);
    EXPECT_EQ(fragment.samples.count(kMedia), 0U);
    EXPECT_TRUE(fragment.afra.local.empty());
}

TEST_F(WriteAudioTest, PutsAFrameInBothTracksAndInTheIndexWhenAsked) {
    const FlvTag tag = aacFrame(23, pattern(9, 2));
    write(tag, 2, true);
    write(aacFrame(46, pattern(9, 3)), 2, false);
    const kz::test::Segment segment = harness_.finish();
    const PackedFragment& fragment = segment.fragments.at(0);
    ASSERT_EQ(fragment.samples.at(kHint).size(), 2U);
    ASSERT_EQ(fragment.samples.at(kMedia).size(), 2U);
    const PackedSample& hint = fragment.samples.at(kHint).front();
    EXPECT_EQ(test::bytesOf(segment, hint), tag.image());
    EXPECT_EQ(test::bytesOf(segment, fragment.samples.at(kMedia).front()), pattern(9, 2));
    EXPECT_EQ(hint.flags, kOtherFlags);
    EXPECT_EQ(fragment.samples.at(kMedia).front().flags, kOtherFlags);
    ASSERT_EQ(fragment.afra.local.size(), 1U);
    EXPECT_EQ(fragment.afra.local.front().time, 23U);
    EXPECT_EQ(fragment.afra.local.front().offset, hint.offset - fragment.offset);
}

TEST_F(WriteAudioTest, TakesAnAacBodyOfOneByteForAFrame) {
    write(flvTag(8, 0, hex("af")), 1, false);
    const PackedFragment fragment = harness_.finishFragment();
    EXPECT_EQ(fragment.samples.at(kMedia).front().size, 0U);
}

/// Whether audio whose body begins with the two bytes reaches the file.
bool isWritten(int first, int second) {
    WriterHarness harness(*test::audioTrackOf(fourCc(".mp3"), Bytes()));
    harness.core.writeAudio(harness.writer, harness.hint, harness.media,
                            messageOf(flvTag(8, 0, raw({first, second, 0})), 1), false);
    return !harness.finish().fragments.empty();
}

TEST(WriteAudioCodeTest, IsTheHighNibbleOfTheFirstByte) {
    const std::set<int> written = {0x20, 0x40, 0x50, 0x60, 0xA0, 0xB0, 0xC0, 0xE0};
    for (int code = 0; code < 0x100; code += 0x10) {
        if (code == 0xD0) continue;
        EXPECT_EQ(isWritten(code, 1), written.count(code) == 1) << std::hex << code;
        EXPECT_EQ(isWritten(code + 0x0F, 1), written.count(code) == 1) << std::hex << code;
    }
}

TEST(WriteAudioCodeTest, IsTheSecondByteForTheExtendedFormat) {
    const std::set<int> written = {1,    2,    3,    4,    5,    6,    0x20,
                                   0x40, 0x50, 0x60, 0xA0, 0xB0, 0xC0, 0xE0};
    for (int code = 0; code < 0x100; ++code) {
        EXPECT_EQ(isWritten(0xDF, code), written.count(code) == 1) << std::hex << code;
    }
}

TEST_F(WriteAudioTest, DropsAnExtendedFormatWithoutItsSecondByte) {
    write(flvTag(8, 0, hex("df")), 1, true);
    write(flvTag(8, 0, Bytes()), 0, true);
    EXPECT_TRUE(harness_.finish().fragments.empty());
}

TEST(WriteDataTest, PutsAMessageInBothTracksAndNotInTheIndex) {
    WriterHarness harness(*test::dataTrackOf(fourCc("amf0"), Bytes()));
    const FlvTag tag = flvTag(18, 5, pattern(12, 4));
    harness.core.writeData(harness.writer, harness.hint, harness.media, messageOf(tag, 0));
    const kz::test::Segment segment = harness.finish();
    const PackedFragment& fragment = segment.fragments.at(0);
    EXPECT_EQ(test::bytesOf(segment, fragment.samples.at(kHint).front()), tag.image());
    EXPECT_EQ(test::bytesOf(segment, fragment.samples.at(kMedia).front()), pattern(12, 4));
    EXPECT_EQ(fragment.samples.at(kHint).front().flags, kOtherFlags);
    EXPECT_TRUE(fragment.afra.local.empty());
}

}  // namespace
}  // namespace torvo::kzspkgutil
