#include <map>
#include <stdexcept>
#include <string>

#include <gtest/gtest.h>

#include "kzs/AfraIndex.h"
#include "support/Random.h"

namespace torvo::kzs {
namespace {

AfraEntry entryOf(std::uint32_t fragment, std::uint64_t time, std::uint64_t offset) {
    AfraEntry entry;
    entry.time = milliseconds(time);
    entry.segment = 1;
    entry.fragment = fragment;
    entry.afraOffset = offset;
    return entry;
}

TEST(AfraIndexTest, StartsWithLongFieldsAndMilliseconds) {
    const AfraIndex index;
    EXPECT_TRUE(index.longIds);
    EXPECT_TRUE(index.longOffsets);
    EXPECT_EQ(index.timescale, 1000U);
}

TEST(AfraIndexTest, FillsWithTheTimeOfTheLastEntry) {
    AfraIndex index;
    index.globalEntries = {entryOf(5, 16000, 44)};
    index.fillMissingFragments(9, 3);
    ASSERT_EQ(index.globalEntries.size(), 4U);
    for (std::uint32_t i = 1; i < 4; ++i) {
        const AfraEntry& entry = index.globalEntries[i];
        EXPECT_EQ(entry.fragment, 5 + i);
        EXPECT_EQ(entry.time.value, 16000U);
        EXPECT_EQ(entry.segment, 3U);
        EXPECT_EQ(entry.afraOffset, 0xFFFFFFFFFFFFFFFFU);
        EXPECT_EQ(entry.offsetFromAfra, 0U);
    }
}

TEST(AfraIndexTest, FillsNothingBeforeTheFirstEntry) {
    AfraIndex index;
    index.fillMissingFragments(7, 1);
    EXPECT_TRUE(index.globalEntries.empty());
}

TEST(AfraIndexTest, FillsNothingForTheNextTheSameOrAnEarlierNumber) {
    AfraIndex index;
    index.globalEntries = {entryOf(5, 16000, 44)};
    for (const std::uint32_t number : {6U, 5U, 4U, 0U}) index.fillMissingFragments(number, 1);
    EXPECT_EQ(index.globalEntries.size(), 1U);
}

TEST(AfraIndexTest, FillsNothingBehindTheLargestNumber) {
    AfraIndex index;
    index.globalEntries = {entryOf(0xFFFFFFFF, 0, 44)};
    index.fillMissingFragments(3, 1);
    EXPECT_EQ(index.globalEntries.size(), 1U);
}

TEST(AfraIndexTest, RefusesToFillWithoutEnd) {
    AfraIndex index;
    index.globalEntries = {entryOf(1, 0, 44)};
    EXPECT_THROW(index.fillMissingFragments(16'000'002, 1), std::length_error);
    EXPECT_THROW(index.fillMissingFragments(0xFFFFFFFF, 1), std::length_error);
    EXPECT_EQ(index.globalEntries.size(), 1U);
}

TEST(AfraIndexTest, ReportsTheFirstNeighboursThatAreNotConsecutive) {
    AfraIndex index;
    EXPECT_FALSE(index.firstBreak());
    index.globalEntries = {entryOf(7, 0, 0)};
    EXPECT_FALSE(index.firstBreak());
    index.globalEntries = {entryOf(7, 0, 0), entryOf(8, 0, 0)};
    EXPECT_FALSE(index.firstBreak());
    index.globalEntries = {entryOf(6, 0, 0), entryOf(7, 0, 0), entryOf(7, 0, 0), entryOf(9, 0, 0)};
    EXPECT_EQ(index.firstBreak(), std::make_pair(7U, 7U));
    index.globalEntries = {entryOf(7, 0, 0), entryOf(9, 0, 0)};
    EXPECT_EQ(index.firstBreak(), std::make_pair(7U, 9U));
    index.globalEntries = {entryOf(7, 0, 0), entryOf(6, 0, 0)};
    EXPECT_EQ(index.firstBreak(), std::make_pair(7U, 6U));
}

TEST(AfraIndexTest, LooksForABreakBehindTheLastEntryThatIsKnown) {
    AfraIndex index;
    index.globalEntries = {entryOf(1, 0, 0), entryOf(2, 0, 0), entryOf(9, 0, 0), entryOf(10, 0, 0)};
    for (const std::size_t checked : {0U, 1U, 2U}) {
        EXPECT_EQ(index.firstBreak(checked), std::make_pair(2U, 9U)) << checked;
    }
    for (const std::size_t checked : {3U, 4U, 5U}) EXPECT_FALSE(index.firstBreak(checked));
}

// Whoever holds one entry may go on to use it while others are added.
TEST(AfraIndexTest, AddingEntriesMovesNone) {
    AfraIndex index;
    index.globalEntries.push_back(entryOf(1, 0, 44));
    const AfraEntry* const first = &index.globalEntries.front();
    index.fillMissingFragments(100'000, 1);
    EXPECT_EQ(&index.globalEntries.front(), first);
    EXPECT_EQ(index.globalEntries.back().fragment, 99'999U);
    EXPECT_FALSE(index.firstBreak());
}

TEST(AfraIndexPropertyTest, IsTheDenseListOfTheNumbersItWasGiven) {
    for (unsigned seed = 1; seed <= 200; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        kz::test::Random random(seed);
        AfraIndex index;
        std::map<std::uint32_t, std::uint64_t> given;  // number and offset
        std::uint32_t number = 1 + random() % 5;
        const std::uint32_t first = number;
        for (int i = 0; i < 60; ++i) {
            const std::uint64_t offset = random();
            index.fillMissingFragments(number, 1);
            index.globalEntries.push_back(entryOf(number, number * 10, offset));
            given[number] = offset;
            number += random() % 4 == 0 ? 1 + random() % 20 : 1;
        }
        EXPECT_FALSE(index.firstBreak());
        std::uint64_t lastTime = 0;
        for (std::uint32_t n = first; n <= given.rbegin()->first; ++n) {
            const AfraEntry& entry = index.globalEntries.at(n - first);
            const auto known = given.find(n);
            if (known != given.end()) lastTime = n * 10;
            EXPECT_EQ(entry.fragment, n);
            EXPECT_EQ(entry.afraOffset, known != given.end() ? known->second : kNoFragmentData);
            EXPECT_EQ(entry.time.value, lastTime);
        }
        EXPECT_EQ(index.globalEntries.size(), given.rbegin()->first - first + 1);
    }
}

}  // namespace
}  // namespace torvo::kzs
