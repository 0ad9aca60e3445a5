#include <limits>

#include <gtest/gtest.h>

#include "kzs/base/Truncation.h"

namespace torvo::kzs {
namespace {

constexpr double kTwoTo63 = 9223372036854775808.0;
constexpr double kBelowTwoTo63 = 9223372036854774784.0;  // the next double

TEST(TruncationTest, GoesTowardsZero) {
    EXPECT_EQ(truncated(2.9), 2U);
    EXPECT_EQ(truncated(0.9), 0U);
    EXPECT_EQ(truncated(-0.9), 0U);
}

TEST(TruncationTest, WrapsNegativeNumbers) {
    EXPECT_EQ(truncated(-1.9), 0xFFFFFFFFFFFFFFFFU);
    EXPECT_EQ(truncated(-kBelowTwoTo63), 0x8000000000000400U);
}

TEST(TruncationTest, GivesZeroForWhatDoesNotFit) {
    EXPECT_EQ(truncated(kBelowTwoTo63), 0x7FFFFFFFFFFFFC00U);
    for (const double value : {kTwoTo63, -kTwoTo63, std::numeric_limits<double>::infinity(),
                               std::numeric_limits<double>::quiet_NaN()}) {
        EXPECT_FALSE(fitsInt64(value)) << value;
        EXPECT_EQ(truncated(value), 0U) << value;
    }
}

}  // namespace
}  // namespace torvo::kzs
