#include "kzs/FragmentList.h"

#include <limits>
#include <optional>

namespace torvo::kzs {
namespace {

/// The fragment that is `steps` behind `first` where they are evenly spaced.
FragmentRunEntry evenlyBehind(const FragmentRunEntry& first, std::uint32_t steps) {
    FragmentRunEntry entry = first;
    entry.firstFragment += steps;
    entry.firstFragmentTimestamp.value += std::uint64_t{steps} * first.fragmentDuration;
    return entry;
}

/// How much later than `even` the entry starts; nothing where it differs in more than that or by
/// more than two bytes hold.
std::optional<std::int16_t> deviationFrom(const FragmentRunEntry& even,
                                          const FragmentRunEntry& entry) {
    using Limits = std::numeric_limits<std::int16_t>;
    const Timestamp& expected = even.firstFragmentTimestamp;
    const Timestamp& real = entry.firstFragmentTimestamp;
    const auto later = static_cast<std::int64_t>(real.value - expected.value);
    const bool differsInTimeOnly = entry.firstFragment == even.firstFragment &&
                                   entry.fragmentDuration == even.fragmentDuration &&
                                   entry.discontinuityIndicator == even.discontinuityIndicator &&
                                   real.timescale == expected.timescale &&
                                   real.flags[0] == expected.flags[0] &&
                                   real.flags[1] == expected.flags[1];
    if (!differsInTimeOnly || later < Limits::min() || later > Limits::max()) return std::nullopt;
    return static_cast<std::int16_t>(later);
}

}  // namespace

void FragmentList::append(const FragmentRunEntry& entry) {
    if (!stretches_.empty()) {
        Stretch& last = stretches_.back();
        if (const auto later = deviationFrom(evenlyBehind(last.first, last.more + 1), entry)) {
            deviations_.push_back(*later);
            ++last.more;
            return;
        }
    }
    stretches_.push_back({entry, 0});
}

std::vector<FragmentRunEntry> FragmentList::entries() const {
    std::vector<FragmentRunEntry> all;
    all.reserve(stretches_.size() + deviations_.size());
    auto deviation = deviations_.begin();
    for (const Stretch& stretch : stretches_) {
        all.push_back(stretch.first);
        for (std::uint32_t step = 1; step <= stretch.more; ++step, ++deviation) {
            all.push_back(evenlyBehind(stretch.first, step));
            all.back().firstFragmentTimestamp.value += static_cast<std::uint64_t>(*deviation);
        }
    }
    return all;
}

}  // namespace torvo::kzs
