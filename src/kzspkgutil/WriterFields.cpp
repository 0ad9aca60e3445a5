#include "kzspkgutil/WriterFields.h"

#include <algorithm>

#include "kzs/base/ByteOrder.h"
#include "kzs/base/Clock.h"

namespace torvo::kzspkgutil {

qlix::kzm::DateRecord currentDate() {
    constexpr std::uint64_t kSecondsFrom1904To1970 = 2082844800;
    return qlix::kzm::dateOf(static_cast<std::uint64_t>(kzs::fileTimeSeconds()) +
                             kSecondsFrom1904To1970);
}

void setLanguage(qlix::kzm::KZMTrackInfo& info, const std::string& language) {
    constexpr std::size_t kLetterCount = 3;
    std::copy_n(language.begin(), std::min(kLetterCount, language.size()), info.language);
}

std::uint32_t truncatedLow32(double value) {
    constexpr double kTwoTo64 = 18446744073709551616.0;
    if (!(value >= 0 && value < kTwoTo64)) return 0;
    return kzs::low32(static_cast<std::uint64_t>(value));
}

}  // namespace torvo::kzspkgutil
