#include <gtest/gtest.h>

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
