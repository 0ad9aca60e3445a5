#include <cstdint>
#include <cstdlib>
#include <ctime>

#include <gtest/gtest.h>

#include "kzs/base/Clock.h"
#include "support/Child.h"

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

// The variable is read once in a process.
TEST(ClockTest, TakesTheTimeOfFilesFromTheEnvironment) {
    EXPECT_TRUE(kz::test::passesInChild([] {
        ASSERT_EQ(::setenv("SOURCE_DATE_EPOCH", "86400", 1), 0);
        EXPECT_EQ(fileTimeSeconds(), 86400);
        EXPECT_GT(realTimeSeconds(), 86400);
    }));
}

TEST(ClockTest, TakesATextThatIsNoCountOfSecondsForNone) {
    for (const char* text : {"", "x", "86400x", "-1", "1.5", " 1", "1234567890123"}) {
        EXPECT_TRUE(kz::test::passesInChild([text] {
            ASSERT_EQ(::setenv("SOURCE_DATE_EPOCH", text, 1), 0);
            const std::int64_t before = std::time(nullptr);
            EXPECT_GE(fileTimeSeconds(), before);
            EXPECT_LE(fileTimeSeconds(), before + 60);
        })) << text;
    }
}

}  // namespace
}  // namespace torvo::kzs
