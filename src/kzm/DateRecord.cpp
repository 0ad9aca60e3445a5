#include "kzm/DateRecord.h"

#include <algorithm>

namespace qlix::kzm {
namespace {

constexpr std::uint64_t kDay = 86400;
constexpr std::uint64_t kYear = 365 * kDay;
constexpr std::uint64_t kMeanYear = 31556952;  // 365.2425 days
constexpr std::uint16_t kDaysBefore[] = {0, 31, 59, 90, 120, 151, 181, 212, 243, 273, 304, 334};

bool isLeapYear(std::uint32_t year) {
    return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
}

std::uint64_t secondsBeforeYear(std::uint32_t year) {
    std::uint64_t seconds = (year - 1904) * kYear + (year - 1901) / 4 * kDay;
    for (std::uint32_t century = 2000; century < year; century += 100) {
        if (century % 400 != 0) seconds -= kDay;
    }
    return seconds;
}

std::uint64_t secondsBeforeMonth(std::uint32_t year, std::uint32_t month) {
    const std::uint64_t leapDay = month > 2 && isLeapYear(year) ? 1 : 0;
    return (kDaysBefore[month - 1] + leapDay) * kDay;
}

}  // namespace

bool operator==(const DateRecord& left, const DateRecord& right) {
    return left.recordSize == right.recordSize && left.day == right.day &&
           left.month == right.month && left.year == right.year && left.hour == right.hour &&
           left.minute == right.minute && left.second == right.second;
}

std::uint64_t secondsOf(const DateRecord& date) {
    const std::uint32_t year = date.year < 1904 ? 1904U : date.year;
    const std::uint32_t month = date.month < 1 || date.month > 12 ? 1U : date.month;
    const std::uint64_t days = date.day < 1 ? 0 : date.day - 1U;
    return secondsBeforeYear(year) + secondsBeforeMonth(year, month) + days * kDay +
           date.hour * std::uint64_t{3600} + date.minute * std::uint64_t{60} + date.second;
}

DateRecord dateOf(std::uint64_t seconds) {
    const std::uint64_t end = secondsBeforeYear(65536);
    std::uint64_t rest = seconds < end ? seconds : end - 1;

    // By the mean length of a year the estimate may be one off either way; one year is taken off,
    // so it is never too late.
    auto year = static_cast<std::uint32_t>(std::max<std::uint64_t>(1904, 1903 + rest / kMeanYear));
    while (secondsBeforeYear(year + 1) <= rest) ++year;
    rest -= secondsBeforeYear(year);

    std::uint32_t month = 12;
    while (secondsBeforeMonth(year, month) > rest) --month;
    rest -= secondsBeforeMonth(year, month);

    DateRecord date;
    // On purpose: the first byte is the length of the packed record, not a part of the date.
    // Pinned by DateRecordTest.StartsWithTheByteEightWhenFilledFromSeconds.
    date.recordSize = 8;
    date.year = static_cast<std::uint16_t>(year);
    date.month = static_cast<std::uint8_t>(month);
    date.day = static_cast<std::uint8_t>(rest / kDay + 1);
    date.hour = static_cast<std::uint8_t>(rest % kDay / 3600);
    date.minute = static_cast<std::uint8_t>(rest % 3600 / 60);
    date.second = static_cast<std::uint8_t>(rest % 60);
    return date;
}

}  // namespace qlix::kzm
