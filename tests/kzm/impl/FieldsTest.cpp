#include <limits>

#include <gtest/gtest.h>

#include "kzm/impl/BoxSupport.h"
#include "kzm/impl/Rescale.h"

namespace qlix::kzm::impl {
namespace {

using namespace kz::test;

Bytes bytesIn(const FieldWriter& out) { return bytesOf(out.data(), out.size()); }

TEST(FieldWriterTest, CollectsFieldsHighByteFirst) {
    FieldWriter out;
    out.u8(0x01);
    out.u16(0x0203);
    out.u24(0xFF040506);
    out.u32(0x0708090A);
    out.u64(0x0B0C0D0E0F101112);
    out.zeros(2);
    out.text("ab");
    const std::uint8_t more[] = {9, 8};
    out.bytes(more, sizeof(more));
    EXPECT_EQ(bytesIn(out), hex("010203040506 0708090a 0b0c0d0e0f101112 0000 6162 0908"));
}

TEST(FieldWriterTest, TruncatesAndClampsFixedPoint) {
    const std::pair<double, std::uint32_t> words[] = {
        {0.0, 0},
        {1.0, 0x10000},
        {1.99999, 0x1FFFF},
        {-1.0, 0},
        {65535.0, 0xFFFF0000},
        {70000.0, 0xFFFFFFFF},
        {std::numeric_limits<double>::quiet_NaN(), 0}};
    for (const auto& each : words) {
        FieldWriter out;
        out.fixed16(each.first);
        EXPECT_EQ(bytesIn(out), u32(each.second)) << each.first;
    }
    const std::pair<double, std::uint32_t> halves[] = {
        {0.5, 0x80}, {1.999, 0x1FF}, {300.0, 0xFFFF}, {-3.0, 0}};
    for (const auto& each : halves) {
        FieldWriter out;
        out.fixed8(each.first);
        EXPECT_EQ(bytesIn(out), u16(each.second)) << each.first;
    }
    EXPECT_EQ(fromFixed16(0x18000), 1.5);
    EXPECT_EQ(fromFixed8(0x0140), 1.25);
}

TEST(FieldReaderTest, ReadsFieldsInOrderAndStaysInItsBox) {
    ReadFile file(hex("01 0203 040506 0708090a 0b0c0d0e0f101112 1314 ffff"));
    FieldReader in(file.stream, 20);
    EXPECT_EQ(in.u8(), 1);
    EXPECT_EQ(in.u16(), 0x0203);
    EXPECT_EQ(in.u24(), 0x040506U);
    EXPECT_EQ(in.u32(), 0x0708090AU);
    EXPECT_EQ(in.u64(), 0x0B0C0D0E0F101112U);
    EXPECT_EQ(in.left(), 2U);
    EXPECT_EQ(codeThrownBy([&] { in.u24(); }), 27U);
    EXPECT_EQ(codeThrownBy([&] { in.u32(); }), 27U);
    EXPECT_EQ(codeThrownBy([&] { in.u64(); }), 27U);
    EXPECT_EQ(codeThrownBy([&] { in.skip(3); }), 27U);
    EXPECT_EQ(codeThrownBy([&] { in.bytes(3); }), 27U);
    EXPECT_EQ(in.bytes(2), (std::vector<std::uint8_t>{0x13, 0x14}));
    EXPECT_EQ(codeThrownBy([&] { in.u8(); }), 27U);
    EXPECT_EQ(codeThrownBy([&] { in.u16(); }), 27U);
    EXPECT_TRUE(in.bytes(0).empty());
}

TEST(FieldReaderTest, ChoosesTheWidthOfAWord) {
    ReadFile file(u32(7) + u64(0x100000000));
    FieldReader in(file.stream, 12);
    EXPECT_EQ(in.word(false), 7U);
    EXPECT_EQ(in.word(true), 0x100000000U);
}

TEST(FieldReaderTest, TakesNoMoreMemoryThanTheFileHas) {
    ReadFile file(fill(10, 1));
    FieldReader in(file.stream, 1ULL << 62);
    EXPECT_EQ(in.bytes(1ULL << 61).size(), 10U);
}

TEST(RescaleTest, RoundsAnExactHalfDown) {
    EXPECT_EQ(rescale(1500, 1000, 1), 1U);
    EXPECT_EQ(rescale(1501, 1000, 1), 2U);
    EXPECT_EQ(rescale(1499, 1000, 1), 1U);
    EXPECT_EQ(rescale(500, 1000, 1), 0U);
    EXPECT_EQ(rescale(3, 2, 1), 1U);
    EXPECT_EQ(rescale(2, 3, 1), 1U);
    EXPECT_EQ(rescale(1, 1000, 90000), 90U);
    EXPECT_EQ(rescaleSigned(1500, 1000, 1), 1);
}

TEST(RescaleTest, TruncatesTowardsZeroBelowIt) {
    // (-1500 + 499) / 1000 and (-2000 + 499) / 1000
    EXPECT_EQ(rescaleSigned(-1500, 1000, 1), -1);
    EXPECT_EQ(rescaleSigned(-2000, 1000, 1), -1);
    EXPECT_EQ(rescaleSigned(-400, 1000, 1), 0);
}

TEST(RescaleTest, LeavesATimeOfEqualTimescalesAlone) {
    EXPECT_EQ(rescale(~0ULL, 7, 7), ~0ULL);
    EXPECT_EQ(rescale(5, 0, 0), 5U);
}

TEST(RescaleTest, HoldsWhatDoesntFitAtTheLimit) {
    EXPECT_EQ(rescale(~0ULL, 1, 2), ~0ULL);
    EXPECT_EQ(rescale(~0ULL, 0xFFFFFFFF, 1), 0x100000001U);
    EXPECT_EQ(rescaleSigned(std::numeric_limits<std::int64_t>::min(), 1, 3),
              std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(rescaleSigned(std::numeric_limits<std::int64_t>::max(), 1, 3),
              std::numeric_limits<std::int64_t>::max());
}

TEST(RescaleTest, RefusesATimescaleOfZero) {
    EXPECT_EQ(codeThrownBy([] { rescale(5, 0, 1); }), 10U);
    EXPECT_EQ(rescale(5, 10, 0), 0U);
}

}  // namespace
}  // namespace qlix::kzm::impl
