#pragma once

#include "kzm/DateRecord.h"

namespace kz::test {

/// A day after the start of all dates: 86400 seconds, 0x15180.
inline qlix::kzm::DateRecord secondDay() {
    qlix::kzm::DateRecord out;
    out.day = 2;
    return out;
}

/// Ten seconds after the start of all dates.
inline qlix::kzm::DateRecord tenthSecond() {
    qlix::kzm::DateRecord out;
    out.second = 10;
    return out;
}

}  // namespace kz::test
