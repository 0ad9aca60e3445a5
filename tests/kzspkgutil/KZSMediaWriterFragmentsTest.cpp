#include <gtest/gtest.h>

#include "KZSMediaWriterFixture.h"
#include "support/ThrownCode.h"

namespace torvo::kzspkgutil {
namespace {

using kz::test::avcFrame;
using kz::test::Bytes;
using kz::test::codeThrownBy;
using kz::test::flvTag;
using kz::test::hex;
using kz::test::raw;
using kz::test::Segment;
using kzs::fourCc;
using test::esdsBox;
using test::messageOf;

using KZSMediaWriterFragmentsTest = test::KZSMediaWriterFixture;

TEST_F(KZSMediaWriterFragmentsTest, AnswersThePositionOfTheFragmentItCompletes) {
    openVideo();
    const std::uint64_t first = writeUpTo({frame(0, true)}, 40).offset;
    const std::uint64_t second = writeUpTo({frame(40)}, 80).offset;
    const Segment segment = close();
    ASSERT_EQ(segment.fragments.size(), 2U);
    EXPECT_EQ(first, segment.fragments[0].offset);
    EXPECT_EQ(second, segment.fragments[1].offset);
    EXPECT_EQ(segment.fragments[1].offset, segment.fragments[0].dataEnd);
}

TEST_F(KZSMediaWriterFragmentsTest, PutsTheBootstrapIntoItsFragment) {
    openVideo();
    writeUpTo({frame(0, true)}, 40, hex("aabb"));
    writeUpTo({frame(40)}, 80, hex("ccddee"));
    const Segment segment = close();
    EXPECT_EQ(segment.fragments.at(0).bootstrap, hex("aabb"));
    EXPECT_EQ(segment.fragments.at(1).bootstrap, hex("ccddee"));
}

TEST_F(KZSMediaWriterFragmentsTest, StopsAtTheFirstMessageAtTheEnd) {
    openVideo();
    // What stands behind the stop waits too, though it is earlier.
    writeUpTo({frame(0), frame(39), frame(40), frame(20)}, 40);
    EXPECT_EQ(timesIn(close(), 0), (std::vector<std::uint32_t>{0, 39}));
}

TEST_F(KZSMediaWriterFragmentsTest, GoesByTheMessageTimeWhenItStops) {
    openVideo();
    writeUpTo(
        {messageOf(avcFrame(0, false, raw({1})), 5, kzs::milliseconds(50), kzs::milliseconds(39)),
         messageOf(avcFrame(0, false, raw({1})), 5, kzs::milliseconds(60), kzs::milliseconds(40))},
        40);
    EXPECT_EQ(timesIn(close(), 0), (std::vector<std::uint32_t>{39}));
}

TEST_F(KZSMediaWriterFragmentsTest, BringsTheEndIntoTheTimescaleOfTheMessages) {
    openVideo();
    const Bytes bootstrap = raw({1});
    // 3639 / 90000 s is 40.43 ms, truncated to 40.
    writer_->writeUpTo({frame(39), frame(40)}, Timestamp{3639, 90000, {0, 0}}, bootstrap.data(), 1);
    EXPECT_EQ(timesIn(close(), 0), (std::vector<std::uint32_t>{39}));
}

TEST_F(KZSMediaWriterFragmentsTest, WritesNothingWhenTheListIsEmpty) {
    openVideo();
    const std::size_t before = stream_.content.size();
    const std::uint64_t first = writeUpTo({}, 40).offset;
    EXPECT_EQ(stream_.content.size(), before);
    const std::uint64_t second = writeUpTo({frame(40)}, 80).offset;
    EXPECT_EQ(first, second);
    const Segment segment = close();
    ASSERT_EQ(segment.fragments.size(), 1U);
    EXPECT_EQ(segment.fragments.front().offset, first);
}

TEST_F(KZSMediaWriterFragmentsTest, WritesNothingWhenTheFirstMessageIsAtTheEnd) {
    openVideo();
    writeUpTo({frame(40)}, 40, hex("aa"));
    writeUpTo({frame(40)}, 80, hex("bb"));
    const Segment segment = close();
    ASSERT_EQ(segment.fragments.size(), 1U);
    EXPECT_EQ(segment.fragments.front().bootstrap, hex("bb"));
}

TEST_F(KZSMediaWriterFragmentsTest, FailsWhenAllMessagesAreDropped) {
    openVideo();
    EXPECT_EQ(codeThrownBy([&] {
                  writeUpTo({messageOf(flvTag(9, 0, raw({0x21, 0})), 1)}, 40);
              }),
              1033U);
}

TEST_F(KZSMediaWriterFragmentsTest, RefusesANullBootstrapWhateverItsSize) {
    for (const std::uint64_t size : {0U, 5U}) {
        openVideo();
        EXPECT_EQ(codeThrownBy([&] {
                      writer_->writeUpTo({frame(0)}, kzs::milliseconds(40), nullptr, size);
                  }),
                  20U);
    }
}

TEST_F(KZSMediaWriterFragmentsTest, PassesOverUnknownTagTypes) {
    openVideo();
    // 73 is a video tag with bit 6 on: the type is compared as it stands.
    writeUpTo({messageOf(flvTag(0, 0, raw({1})), 0), messageOf(flvTag(73, 10, raw({0x17, 1})), 1),
               messageOf(flvTag(255, 10, raw({1})), 0), TCMessage(), frame(20)},
              40);
    EXPECT_EQ(timesIn(close(), 0), (std::vector<std::uint32_t>{20}));
}

TEST_F(KZSMediaWriterFragmentsTest, RefusesAMessageWithoutATrack) {
    open({test::audioTrackOf(fourCc("mp4a"), esdsBox())});
    EXPECT_EQ(codeThrownBy([&] { writeUpTo({frame(0)}, 40); }), 20U);
}

TEST_F(KZSMediaWriterFragmentsTest, RefusesATimeBeforeZero) {
    openVideo();
    const Timestamp before = kzs::milliseconds(0xFFFFFFFF80000000);  // -2^31 ms
    EXPECT_EQ(codeThrownBy([&] {
                  writeUpTo({messageOf(avcFrame(0, false, raw({1})), 5, before, before)}, 40);
              }),
              1280U);
}

TEST_F(KZSMediaWriterFragmentsTest, LivesOnAfterFinishing) {
    openVideo();
    writeUpTo({frame(0, true)}, 40);
    writer_->finishWriter();
    writeUpTo({frame(40)}, 80);
    EXPECT_EQ(close().fragments.size(), 2U);
}

}  // namespace
}  // namespace torvo::kzspkgutil
