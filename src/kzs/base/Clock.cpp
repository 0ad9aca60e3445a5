#include "kzs/base/Clock.h"

#include <cstdlib>
#include <cstring>
#include <ctime>

namespace torvo::kzs {
namespace {

std::optional<std::int64_t>& testTime() {
    static std::optional<std::int64_t> seconds;
    return seconds;
}

// A text that is not a whole number of seconds counts as not given.
std::optional<std::int64_t> sourceDateEpoch() {
    const char* text = std::getenv("SOURCE_DATE_EPOCH");
    if (text == nullptr || *text == '\0' || std::strlen(text) > 12) return std::nullopt;
    std::int64_t seconds = 0;
    for (; *text != '\0'; ++text) {
        if (*text < '0' || *text > '9') return std::nullopt;
        seconds = seconds * 10 + (*text - '0');
    }
    return seconds;
}

}  // namespace

std::int64_t fileTimeSeconds() {
    if (testTime()) return *testTime();
    static const std::optional<std::int64_t> epoch = sourceDateEpoch();
    return epoch ? *epoch : realTimeSeconds();
}

std::int64_t realTimeSeconds() {
    if (testTime()) return *testTime();
    return static_cast<std::int64_t>(std::time(nullptr));
}

void setClockForTests(std::optional<std::int64_t> seconds) { testTime() = seconds; }

}  // namespace torvo::kzs
