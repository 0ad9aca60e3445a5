#include <gtest/gtest.h>

#include "kzs/base/Random.h"

namespace torvo::kzs {
namespace {

TEST(RandomTest, RepeatsItsSequenceForASeed) {
    seedRandom(5);
    const int first = nextRandom();
    const int second = nextRandom();
    EXPECT_GE(first, 0);
    EXPECT_GE(second, 0);
    seedRandom(5);
    EXPECT_EQ(nextRandom(), first);
    EXPECT_EQ(nextRandom(), second);
}

TEST(RandomTest, AsksTheSourceOfATest) {
    int next = 40;
    setRandomForTests([&next] { return ++next; });
    EXPECT_EQ(nextRandom(), 41);
    EXPECT_EQ(nextRandom(), 42);
    setRandomForTests({});
    EXPECT_EQ(next, 42);
}

}  // namespace
}  // namespace torvo::kzs
