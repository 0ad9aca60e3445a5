#include <limits>

#include <gtest/gtest.h>

#include "kzm/DateRecord.h"

namespace qlix::kzm {
namespace {

DateRecord date(int year, int month, int day, int hour = 0, int minute = 0, int second = 0) {
    DateRecord out;
    out.year = static_cast<std::uint16_t>(year);
    out.month = static_cast<std::uint8_t>(month);
    out.day = static_cast<std::uint8_t>(day);
    out.hour = static_cast<std::uint8_t>(hour);
    out.minute = static_cast<std::uint8_t>(minute);
    out.second = static_cast<std::uint8_t>(second);
    return out;
}

struct Case {
    DateRecord date;
    std::uint64_t seconds;
};

// Seconds from `date -u -d <date> +%s` plus 2082844800, the seconds from 1904 to 1970.
const Case kCases[] = {
    {date(1904, 1, 1), 0},           {date(1904, 2, 29), 5097600},
    {date(1904, 3, 1), 5184000},     {date(1905, 1, 1), 31622400},
    {date(1970, 1, 1), 2082844800},  {date(2000, 2, 29, 23, 59, 59), 3034713599},
    {date(2000, 3, 1), 3034713600},  {date(2012, 12, 31, 12, 34, 56), 3439802096},
    {date(2100, 2, 28), 6190300800}, {date(2100, 3, 1), 6190387200},
    {date(2101, 1, 1), 6216825600},  {date(2401, 1, 1), 15683932800},
};

TEST(DateRecordTest, CountsSecondsFromTheStartOf1904) {
    for (const Case& each : kCases) EXPECT_EQ(secondsOf(each.date), each.seconds) << each.seconds;
}

TEST(DateRecordTest, IsFoundAgainFromItsSeconds) {
    for (const Case& each : kCases) EXPECT_EQ(dateOf(each.seconds), each.date) << each.seconds;
}

TEST(DateRecordTest, StartsWithTheByteEightWhenFilledFromSeconds) {
    EXPECT_EQ(dateOf(0).recordSize, 8);
    EXPECT_EQ(dateOf(3439802096).recordSize, 8);
}

TEST(DateRecordTest, EndsAtTheLastSecondOfTheYear65535) {
    EXPECT_EQ(dateOf(std::numeric_limits<std::uint64_t>::max()), date(65535, 12, 31, 23, 59, 59));
}

TEST(DateRecordTest, FindsEachDayOfFourCenturiesOnce) {
    int year = 1904;
    int month = 1;
    int day = 1;
    for (std::uint64_t seconds = 0; seconds < std::uint64_t{146097} * 86400; seconds += 86400) {
        ASSERT_EQ(dateOf(seconds), date(year, month, day));
        ASSERT_EQ(secondsOf(date(year, month, day)), seconds);
        const bool leap = year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
        const int lengths[] = {31, leap ? 29 : 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
        if (++day > lengths[month - 1]) {
            day = 1;
            if (++month > 12) {
                month = 1;
                ++year;
            }
        }
    }
}

}  // namespace
}  // namespace qlix::kzm
