#include <gtest/gtest.h>

#include "kzs/base/Timestamp.h"

namespace torvo::kzs {
namespace {

Timestamp at(std::uint64_t value, std::uint32_t timescale) {
    return Timestamp{value, timescale, {0, 0}};
}

TEST(TimestampTest, StartsAt0Milliseconds) {
    const Timestamp fresh;
    EXPECT_EQ(fresh.value, 0U);
    EXPECT_EQ(fresh.timescale, 1000U);
    EXPECT_EQ(fresh.flags[0], 0);
    EXPECT_EQ(fresh.flags[1], 0);
}

TEST(TimestampTest, ComparesInTheTimescaleOfTheLeftSide) {
    // 1 tick of 90000 is 0 ms, but 0 ms is 0 ticks: equality depends on the side.
    EXPECT_TRUE(milliseconds(0) == at(1, 90000));
    EXPECT_FALSE(at(1, 90000) == milliseconds(0));
    EXPECT_TRUE(at(90000, 90000) == milliseconds(1000));
    EXPECT_TRUE(milliseconds(1000) >= at(90089, 90000));
    EXPECT_TRUE(milliseconds(1000) < at(90090, 90000));
}

TEST(TimestampTest, RescalesTruncating) {
    EXPECT_EQ(rescaleTruncating(1999, 1000, 1), 1U);
    EXPECT_EQ(rescaleTruncating(29, 30, 1000), 966U);
    EXPECT_EQ(rescaleTruncating(7, 1000, 1000), 7U);
    // Between equal timescales nothing is multiplied, so that nothing can wrap.
    EXPECT_EQ(rescaleTruncating(0x7FFFFFFFFFFFFFFF, 1000, 1000), 0x7FFFFFFFFFFFFFFFU);
}

TEST(TimestampTest, RescalesNegativeTimesAsSignedNumbers) {
    const auto minus1500 = static_cast<std::uint64_t>(-1500);
    EXPECT_EQ(rescaleTruncating(minus1500, 1000, 1), static_cast<std::uint64_t>(-1));
}

TEST(TimestampTest, LeavesATimeWithoutATimescaleAsItIs) {
    EXPECT_EQ(rescaleTruncating(5, 0, 1000), 5U);
}

TEST(TimestampTest, SubtractsInTheTimescaleOfTheLeftSide) {
    const Timestamp difference = at(180000, 90000) - milliseconds(500);
    EXPECT_EQ(difference.value, 135000U);
    EXPECT_EQ(difference.timescale, 90000U);
}

TEST(TimestampTest, WrapsADifferenceBelow0) {
    EXPECT_EQ((milliseconds(1) - milliseconds(2)).value, 0xFFFFFFFFFFFFFFFFU);
}

}  // namespace
}  // namespace torvo::kzs
