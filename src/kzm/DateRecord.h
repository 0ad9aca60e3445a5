#pragma once

#include <cstdint>

namespace qlix::kzm {

/// A date of the proleptic Gregorian calendar, UTC.
struct DateRecord {
    /// Length of the record in its packed form; always 8 in what the library fills.
    std::uint8_t recordSize = 8;
    std::uint8_t day = 1;       ///< 1 to 31
    std::uint8_t month = 1;     ///< 1 to 12
    std::uint16_t year = 1904;  ///< 1904 or later
    std::uint8_t hour = 0;      ///< 0 to 23
    std::uint8_t minute = 0;    ///< 0 to 59
    std::uint8_t second = 0;    ///< 0 to 59
};

bool operator==(const DateRecord& left, const DateRecord& right);
inline bool operator!=(const DateRecord& left, const DateRecord& right) { return !(left == right); }

/// Seconds since 1904-01-01 00:00:00, as date fields of a file hold them.
std::uint64_t secondsOf(const DateRecord& date);

/// The inverse of `secondsOf`. Seconds beyond the year 65535 give the last second of that year.
DateRecord dateOf(std::uint64_t seconds);

}  // namespace qlix::kzm
