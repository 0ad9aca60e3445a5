#include <gtest/gtest.h>

#include "kzs/base/ByteOrder.h"
#include "kzspkgutil/model/BoxSearch.h"
#include "support/Bytes.h"

namespace torvo::kzspkgutil {
namespace {

using kz::test::Bytes;
using kz::test::fill;
using kz::test::raw;
using kz::test::text;
using kz::test::u32;

constexpr std::uint32_t kAvcC = kzs::fourCc("avcC");

Bytes bytesOf(ByteView view) { return kz::test::bytesOf(view.data, view.size); }

TEST(FindBoxTest, GivesTheWholeBoxHeaderIncluded) {
    const Bytes box = u32(11) + text("avcC") + raw({1, 2, 3});
    EXPECT_EQ(bytesOf(findBox(box, kAvcC)), box);
}

TEST(FindBoxTest, FindsTheLettersInsideOtherBytes) {
    const Bytes box = u32(9) + text("avcC") + raw({9});
    EXPECT_EQ(bytesOf(findBox(raw({1, 2, 3}) + box + raw({4, 5}), kAvcC)), box);
}

TEST(FindBoxTest, FindsTheLettersBehindAHalfHit) {
    const Bytes box = u32(8) + text("avcC");
    EXPECT_EQ(bytesOf(findBox(text("avc") + box, kAvcC)), box);
    // The size word itself ends in the first letter: "aavcC".
    const Bytes tight = raw({0, 0, 0}) + text("aavcC") + fill(0x61 - 8, 7);
    EXPECT_EQ(bytesOf(findBox(tight, kAvcC)), tight);
}

TEST(FindBoxTest, GoesOnPastAHitThatHasNoRoomForASize) {
    const Bytes box = u32(8) + text("avcC");
    EXPECT_EQ(bytesOf(findBox(text("avcC") + box, kAvcC)), box);
    EXPECT_EQ(findBox(raw({0, 0, 8}) + text("avcC") + fill(4, 0), kAvcC).size, 0U);
}

TEST(FindBoxTest, TakesTheFirstOfTwo) {
    const Bytes first = u32(9) + text("avcC") + raw({1});
    EXPECT_EQ(bytesOf(findBox(first + u32(9) + text("avcC") + raw({2}), kAvcC)), first);
}

TEST(FindBoxTest, FindsNothingInBlobsWithoutABox) {
    EXPECT_EQ(findBox(Bytes(), kAvcC).size, 0U);
    EXPECT_EQ(findBox(text("avcC"), kAvcC).size, 0U);
    EXPECT_EQ(findBox(text("0000avc"), kAvcC).size, 0U);
    EXPECT_EQ(findBox(u32(8) + text("avcc"), kAvcC).size, 0U);
}

TEST(FindBoxTest, TakesASizeFrom8ToTheEndOfTheBlobOnly) {
    const Bytes tail = text("avcC") + raw({1, 2, 3, 4});
    EXPECT_EQ(findBox(u32(7) + tail, kAvcC).size, 0U);
    EXPECT_EQ(findBox(u32(8) + tail, kAvcC).size, 8U);
    EXPECT_EQ(findBox(u32(12) + tail, kAvcC).size, 12U);
    EXPECT_EQ(findBox(u32(13) + tail, kAvcC).size, 0U);
    EXPECT_EQ(findBox(u32(0) + tail, kAvcC).size, 0U);
    // What stands ahead of the box is no room behind it.
    EXPECT_EQ(findBox(raw({1, 2, 3}) + u32(12) + tail, kAvcC).size, 12U);
    EXPECT_EQ(findBox(raw({1, 2, 3}) + u32(13) + tail, kAvcC).size, 0U);
    EXPECT_EQ(findBox(u32(0xFFFFFFFF) + tail, kAvcC).size, 0U);
}

}  // namespace
}  // namespace torvo::kzspkgutil
