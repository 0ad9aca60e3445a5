#include <algorithm>

#include <gtest/gtest.h>

#include "kzspkgutil/model/KZSPkgUtilException.h"
#include "kzspkgutil/model/TCMessage.h"
#include "support/Bytes.h"

namespace torvo::kzspkgutil {
namespace {

using kz::test::Bytes;
using kz::test::hexTable;

class TCMessageTest : public testing::Test {
protected:
    /// A message over a block of zeros.
    TCMessage message(std::uint32_t tagSize, std::uint32_t dataOffset = 11,
                      const Timestamp& sampleTime = Timestamp(),
                      const Timestamp& messageTime = Timestamp()) {
        const BlockPtr block = arena_.allocate(tagSize);
        std::fill_n(block->data(), tagSize, std::uint8_t{0});
        return TCMessage(sampleTime, messageTime, tagSize, block, block->data() + dataOffset,
                         tagSize - 4 - dataOffset);
    }

    static std::uint32_t ownersOf(const TCMessage& message) {
        message.getBlock()->addRef();
        return message.getBlock()->release();
    }

    RefCountedMemoryArena arena_;
};

TEST_F(TCMessageTest, GivesItsImageAwayAndKeepsItsTimesAndItsSize) {
    TCMessage giver = message(20, 12, {5, 1000, {0, 0}}, {3, 1000, {0, 0}});
    const std::uint8_t* const tag = giver.getTag();
    const TCMessage taken = giver.takeImage();
    EXPECT_EQ(taken.getTag(), tag);
    EXPECT_EQ(taken.getSampleData(), tag + 12);
    EXPECT_EQ(taken.getSampleDataSize(), 4U);
    EXPECT_EQ(ownersOf(taken), 1U);
    EXPECT_EQ(giver.getTag(), nullptr);
    EXPECT_EQ(giver.getSampleData(), nullptr);
    EXPECT_EQ(giver.getSampleDataSize(), 0U);
    EXPECT_EQ(giver.getTagSize(), 20U);
    EXPECT_EQ(giver.getSampleTime().value, 5U);
    EXPECT_EQ(giver.getMessageTime().value, 3U);
}

TEST_F(TCMessageTest, StandsForNoMessageWhenDefaultMade) {
    const TCMessage none;
    EXPECT_EQ(none.getTagSize(), 0U);
    EXPECT_EQ(none.getTag(), nullptr);
    EXPECT_EQ(none.getTagBody(), nullptr);
    EXPECT_EQ(none.getSampleData(), nullptr);
    EXPECT_EQ(none.getSampleDataOffset(), 0U);
    EXPECT_EQ(none.getSampleDataSize(), 0U);
    EXPECT_EQ(none.getBlock(), nullptr);
    EXPECT_EQ(none.getSampleTime().value, 0U);
    EXPECT_EQ(none.getSampleTime().timescale, 1000U);
    EXPECT_EQ(none.getMessageTime().value, 0U);
    EXPECT_EQ(none.getMessageTime().timescale, 1000U);
}

TEST_F(TCMessageTest, KeepsTheBodySizeOfNoMessageIn64Bits) {
    EXPECT_EQ(TCMessage().getTagBodySize(), 0xFFFFFFFFFFFFFFF1U);
}

TEST_F(TCMessageTest, WritesTheMessageTimeIntoTheTag) {
    const TCMessage made = message(20, 13, kzs::milliseconds(1), kzs::milliseconds(0x12345678));
    EXPECT_EQ(kz::test::bytesOf(made.getTag(), 20), hexTable(R"(
        0   00000000          type and body size, left alone
        4   345678            low 24 bits of the time
        7   12                its high 8 bits
        8   000000000000000000000000
    )"));
}

TEST_F(TCMessageTest, CutsATimeAbove32Bits) {
    const TCMessage made = message(15, 11, Timestamp(), kzs::milliseconds(0x9AFEDCBA98U));
    EXPECT_EQ(kz::test::bytesOf(made.getTag() + 4, 4), kz::test::hex("dc ba 98 fe"));
}

TEST_F(TCMessageTest, KeepsItsTwoTimesApart) {
    const TCMessage made = message(15, 11, Timestamp{90000, 90000, {0, 0}}, kzs::milliseconds(7));
    EXPECT_EQ(made.getSampleTime().value, 90000U);
    EXPECT_EQ(made.getSampleTime().timescale, 90000U);
    EXPECT_EQ(made.getMessageTime().value, 7U);
}

TEST_F(TCMessageTest, TellsWhereItsPartsLie) {
    const TCMessage made = message(30, 16);
    EXPECT_EQ(made.getTag(), made.getBlock()->data());
    EXPECT_EQ(made.getTagBody(), made.getTag() + 11);
    EXPECT_EQ(made.getTagBodySize(), 15U);
    EXPECT_EQ(made.getSampleData(), made.getTag() + 16);
    EXPECT_EQ(made.getSampleDataOffset(), 16U);
    EXPECT_EQ(made.getSampleDataSize(), 10U);
}

TEST_F(TCMessageTest, HasAnEmptyBodyWhenTheTagIsOnlyItsFrame) {
    EXPECT_EQ(message(15).getTagBodySize(), 0U);
}

TEST_F(TCMessageTest, SharesItsBlockAndSamplePointerWithACopy) {
    const TCMessage first = message(20, 12);
    EXPECT_EQ(ownersOf(first), 1U);
    {
        const TCMessage second = first;
        EXPECT_EQ(ownersOf(first), 2U);
        EXPECT_EQ(second.getTag(), first.getTag());
        EXPECT_EQ(second.getSampleData(), first.getSampleData());
    }
    EXPECT_EQ(ownersOf(first), 1U);
}

TEST_F(TCMessageTest, LetsGoOfTheBlockItHeldWhenAssignedTo) {
    const TCMessage kept = message(20);
    TCMessage other = kept;
    other = message(16);
    EXPECT_EQ(ownersOf(kept), 1U);
    EXPECT_EQ(other.getTagSize(), 16U);
}

TEST_F(TCMessageTest, IsReadThroughItsBase) {
    const TCMessage made = message(20, 13);
    const Message& base = made;
    EXPECT_EQ(base.getTag(), made.getBlock()->data());
    EXPECT_EQ(base.getSampleDataOffset(), 13U);
}

TEST(TagSizesTest, StandAroundTheBody) {
    Bytes tag = kz::test::fill(11 + 3 + 4, 0xEE);
    storeTagSizes(tag.data(), 3);
    EXPECT_EQ(tag, hexTable(R"(
        0   ee          tag type, left alone
        1   000003      body size
        4   eeeeeeee    time, left alone
        8   000000      stream id
        11  eeeeee      body, left alone
        14  0000000e    body size + 11
    )"));
}

TEST(AllocateTagTest, GivesRoomForTheFrameAroundTheBody) {
    RefCountedMemoryArena arena;
    EXPECT_EQ(allocateTag(arena, 0)->size(), 15U);
    EXPECT_EQ(allocateTag(arena, 100)->size(), 115U);
}

TEST(AllocateTagTest, TakesTheLargestBodyOf24BitsAndNoLarger) {
    RefCountedMemoryArena arena;
    EXPECT_EQ(allocateTag(arena, 0xFFFFFF)->size(), 0xFFFFFFU + 15U);
    try {
        allocateTag(arena, 0x1000000);
        FAIL() << "a body of 2^24 bytes was taken";
    } catch (const KZSPkgUtilException& failure) {
        EXPECT_EQ(failure.code(), 5U);
        EXPECT_STREQ(failure.what(),
                     "Error (5) - a body of 16777216 bytes is too large for an FLV tag");
    }
}

}  // namespace
}  // namespace torvo::kzspkgutil
