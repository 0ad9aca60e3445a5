#include "kzs/AfraIndex.h"

#include <algorithm>
#include <stdexcept>

namespace torvo::kzs {

// On purpose: with an empty list nothing is filled, so the list starts at the first fragment's
// number. Pinned by AfraIndexTest.FillsNothingBeforeTheFirstEntry.
void AfraIndex::fillMissingFragments(std::uint32_t number, std::uint32_t currentSegment) {
    if (globalEntries.empty()) return;
    AfraEntry filler;
    // On purpose: the time of the last entry before the leap.
    // Pinned by AfraIndexTest.FillsWithTheTimeOfTheLastEntry.
    filler.time = globalEntries.back().time;
    filler.segment = currentSegment;
    filler.afraOffset = kNoFragmentData;
    const std::uint64_t next = std::uint64_t{globalEntries.back().fragment} + 1;
    if (next >= number) return;
    if (globalEntries.size() + (number - next) > kMaxFilledEntries) {
        throw std::length_error("too many fragment numbers without data");
    }
    for (std::uint64_t n = next; n < number; ++n) {
        filler.fragment = static_cast<std::uint32_t>(n);
        globalEntries.push_back(filler);
    }
}

std::optional<std::pair<std::uint32_t, std::uint32_t>> AfraIndex::firstBreak(
    std::size_t checked) const {
    // The last one that is known has a neighbour that isn't.
    for (std::size_t i = std::max<std::size_t>(checked, 1); i < globalEntries.size(); ++i) {
        const std::uint32_t earlier = globalEntries[i - 1].fragment;
        const std::uint32_t later = globalEntries[i].fragment;
        if (later != earlier + 1) return std::make_pair(earlier, later);
    }
    return std::nullopt;
}

bool operator==(const AfraEntry& left, const AfraEntry& right) {
    return left.time == right.time && left.offset == right.offset &&
           left.segment == right.segment && left.fragment == right.fragment &&
           left.afraOffset == right.afraOffset && left.offsetFromAfra == right.offsetFromAfra;
}

bool operator==(const AfraIndex& left, const AfraIndex& right) {
    return left.longIds == right.longIds && left.longOffsets == right.longOffsets &&
           left.timescale == right.timescale && left.localEntries == right.localEntries &&
           left.globalEntries == right.globalEntries;
}

}  // namespace torvo::kzs
