#include <gtest/gtest.h>

#include "kzs/base/ByteOrder.h"
#include "kzspkgutil/CodecConfig.h"
#include "support/Bytes.h"

namespace torvo::kzspkgutil {
namespace {

using kz::test::Bytes;
using kz::test::fill;
using kz::test::hex;
using kz::test::raw;
using kz::test::text;
using kz::test::u32;

constexpr std::uint32_t kAvcC = kzs::fourCc("avcC");

Bytes bytesOf(ByteView view) { return kz::test::bytesOf(view.data, view.size); }

// 'esds' with tags 3, 4 and 5 in short form and the two bytes of an AAC LC configuration.
Bytes shortEsds() {
    return hex(
        "00000027 65736473 00000000"
        "03 19 0001 00"
        "04 11 40 15 000000 00000000 00000000"
        "05 02 1210"
        "06 01 02");
}

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

TEST(AudioSpecificConfigTest, LiesBehindTags3And4And5) {
    EXPECT_EQ(bytesOf(findAudioSpecificConfig(shortEsds())), hex("1210"));
}

TEST(AudioSpecificConfigTest, IsFoundBehindLengthsOfFourBytes) {
    const Bytes esds =
        hex("00000036 65736473 00000000"
            "03 80808025 0002 00"
            "04 80808017 40 15 000000 0001f400 0001f400"
            "05 80808005 1190 56e5 00"
            "06 80808001 02");
    ASSERT_EQ(esds.size(), 0x36U);
    EXPECT_EQ(bytesOf(findAudioSpecificConfig(esds)), hex("1190 56e5 00"));
}

TEST(AudioSpecificConfigTest, HasALengthOfSevenBitsAByte) {
    // 0x81 0x02 is 1 * 128 + 2.
    const Bytes config = kz::test::pattern(130, 3);
    const Bytes descriptors = hex("03 00 0001 00 04 00") + fill(13, 0) + hex("05 8102") + config;
    const Bytes esds = u32(12 + descriptors.size()) + text("esds") + u32(0) + descriptors;
    EXPECT_EQ(bytesOf(findAudioSpecificConfig(esds)), config);
}

TEST(AudioSpecificConfigTest, IsFoundBehindABareStreamId) {
    // The first byte isn't 3: two more bytes are passed over, then tag 4 stands.
    const Bytes esds =
        hex("00000025 65736473 00000000 00 0001 04 11") + fill(13, 0) + hex("05 02 1390 000000");
    EXPECT_EQ(bytesOf(findAudioSpecificConfig(esds)), hex("1390"));
}

TEST(AudioSpecificConfigTest, IsNothingWhereTheStreamIdIsCut) {
    EXPECT_EQ(findAudioSpecificConfig(hex("0000000e 65736473 00000000 00 00")).size, 0U);
}

TEST(AudioSpecificConfigTest, IsNothingWithoutTag5) {
    EXPECT_EQ(findAudioSpecificConfig(shortEsds().patched(32, raw({6}))).size, 0U);
}

TEST(AudioSpecificConfigTest, IsNothingWithoutTag4) {
    EXPECT_EQ(findAudioSpecificConfig(shortEsds().patched(17, raw({5}))).size, 0U);
}

TEST(AudioSpecificConfigTest, IsNothingWithoutAnEsdsBox) {
    EXPECT_EQ(findAudioSpecificConfig(Bytes()).size, 0U);
    EXPECT_EQ(findAudioSpecificConfig(shortEsds().patched(4, text("esdz"))).size, 0U);
}

TEST(AudioSpecificConfigTest, IsNothingWhenEmpty) {
    EXPECT_EQ(findAudioSpecificConfig(shortEsds().patched(33, raw({0}))).size, 0U);
}

TEST(AudioSpecificConfigTest, MayNotReachBeyondTheBlob) {
    // Behind the length byte at 33 the blob has 5 bytes.
    EXPECT_EQ(findAudioSpecificConfig(shortEsds().patched(33, raw({5}))).size, 5U);
    EXPECT_EQ(findAudioSpecificConfig(shortEsds().patched(33, raw({6}))).size, 0U);
}

TEST(AudioSpecificConfigTest, HasNoLengthOfFiveBytes) {
    const auto esds = [](const Bytes& length) {
        const Bytes descriptors =
            raw({3}) + length + hex("0001 00 04 00") + fill(13, 0) + hex("05 02 1210");
        return u32(12 + descriptors.size()) + text("esds") + u32(0) + descriptors;
    };
    EXPECT_EQ(findAudioSpecificConfig(esds(hex("80808019"))).size, 2U);
    EXPECT_EQ(findAudioSpecificConfig(esds(hex("8080808019"))).size, 0U);
}

TEST(AudioSpecificConfigTest, IsNothingWhereverTheBoxIsCut) {
    const Bytes whole = shortEsds();
    // The configuration ends at byte 36.
    for (std::size_t count = 0; count < 36; ++count) {
        Bytes cut = whole.cutTo(count);
        if (count >= 8) cut = cut.patched(0, u32(count));
        EXPECT_EQ(findAudioSpecificConfig(cut).size, 0U) << "cut to " << count;
    }
    EXPECT_EQ(findAudioSpecificConfig(whole.cutTo(36).patched(0, u32(36))).size, 2U);
}

}  // namespace
}  // namespace torvo::kzspkgutil
