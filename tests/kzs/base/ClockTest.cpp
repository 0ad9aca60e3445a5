#include <ctime>

#include <gtest/gtest.h>

#include "kzs/base/Clock.h"

namespace torvo::kzs {
namespace {

TEST(ClockTest, StandsStillForTests) {
    setClockForTests(1234567890);
    EXPECT_EQ(fileTimeSeconds(), 1234567890);
    EXPECT_EQ(realTimeSeconds(), 1234567890);
    setClockForTests(std::nullopt);
}

TEST(ClockTest, GivesTheRealTimeOtherwise) {
    const std::int64_t before = std::time(nullptr);
    const std::int64_t now = realTimeSeconds();
    EXPECT_GE(now, before);
    EXPECT_LE(now, before + 60);
}

}  // namespace
}  // namespace torvo::kzs
