#include <limits>

#include <gtest/gtest.h>

#include "kzs/FragmentList.h"
#include "support/Random.h"

namespace torvo::kzs {
namespace {

/// Equal in every field; timestamps of different scales aren't.
bool areSame(const FragmentRunEntry& left, const FragmentRunEntry& right) {
    return left == right &&
           left.firstFragmentTimestamp.value == right.firstFragmentTimestamp.value &&
           left.firstFragmentTimestamp.timescale == right.firstFragmentTimestamp.timescale;
}

void expectKept(const std::vector<FragmentRunEntry>& added) {
    FragmentList list;
    for (const FragmentRunEntry& entry : added) list.append(entry);
    const std::vector<FragmentRunEntry> kept = list.entries();
    ASSERT_EQ(kept.size(), added.size());
    for (std::size_t i = 0; i < added.size(); ++i) EXPECT_TRUE(areSame(kept[i], added[i])) << i;
}

TEST(FragmentListTest, IsEmptyAtFirst) { EXPECT_TRUE(FragmentList().entries().empty()); }

TEST(FragmentListTest, KeepsTheRealTimesOfARun) {
    expectKept({{1, milliseconds(0), 500, 0},
                {2, milliseconds(480), 500, 0},
                {3, milliseconds(1020), 500, 0},
                {4, milliseconds(1500), 500, 0}});
}

TEST(FragmentListTest, KeepsWhatDoesNotContinueARun) {
    expectKept({{7, milliseconds(0), 500, 0},
                {8, milliseconds(500), 600, 0},              // another duration
                {10, milliseconds(1100), 600, 0},            // another number than the next
                {10, milliseconds(1700), 600, 0},            // the same once more
                {11, milliseconds(0), 0, 2},                 // no fragment
                {12, milliseconds(0), 0, 1},                 // another mark
                {13, Timestamp{2000, 90000, {0, 0}}, 0, 1},  // another scale
                {14, Timestamp{2000, 90000, {0, 0}}, 0, 1}});
}

TEST(FragmentListTest, KeepsTimesFarFromAnEvenSpacing) {
    for (const std::uint64_t off : {32766U, 32767U, 32768U, 32769U, 65535U, 65536U, 0xFFFFFFFFU}) {
        SCOPED_TRACE(off);
        expectKept({{1, milliseconds(100000), 500, 0},
                    {2, milliseconds(100500 + off), 500, 0},
                    {3, milliseconds(101000), 500, 0}});
        expectKept({{1, milliseconds(100000), 500, 0},
                    {2, milliseconds(100500 - off), 500, 0},
                    {3, milliseconds(101000), 500, 0}});
    }
    constexpr std::uint64_t kLast = std::numeric_limits<std::uint64_t>::max();
    expectKept({{0xFFFFFFFF, milliseconds(kLast), 500, 0}, {0, milliseconds(499), 500, 0}});
}

TEST(FragmentListPropertyTest, IsThePlainListOfWhatWasAdded) {
    for (unsigned seed = 1; seed <= 200; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        kz::test::Random random(seed);
        std::vector<FragmentRunEntry> added;
        FragmentRunEntry entry{1, milliseconds(0), 500, 0};
        for (int i = 0; i < 300; ++i) {
            entry.firstFragment += random() % 20 == 0 ? random() % 5 : 1;
            entry.firstFragmentTimestamp.value += 400 + random() % 200;
            if (random() % 50 == 0) entry.firstFragmentTimestamp.value += random() % 100'000;
            if (random() % 20 == 0) entry.fragmentDuration = 100 * (random() % 6);
            if (random() % 20 == 0) entry.discontinuityIndicator = random() % 4;
            added.push_back(entry);
        }
        expectKept(added);
    }
}

}  // namespace
}  // namespace torvo::kzs
