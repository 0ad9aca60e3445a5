#include "kzm/impl/MixedTrackIterator.h"

#include <algorithm>

#include "kzm/impl/StblBox.h"
#include "kzm/impl/SttsBox.h"
#include "kzm/impl/TrakBox.h"

namespace qlix::kzm::impl {
namespace {

std::uint64_t endOfTables(const KZMTrack& track) {
    const SttsRow& last = track.trak().stbl()->stts()->rows().back();
    const std::uint64_t length = std::uint64_t{last.count} * last.delta;
    return last.startTime + std::min(length, ~last.startTime);
}

/// The part of the range behind `begin`, counted from there.
TimeRange behind(const KZMTrack& track, const TimeRange& range, std::uint64_t begin) {
    const auto from = [&](const ScaledTime& time) {
        const std::uint64_t ticks = mediaTicks(track, time);
        return ScaledTime{ticks - std::min(ticks, begin), track.record().timescale};
    };
    return {from(range.start), from(range.end)};
}

}  // namespace

MixedTrackIterator::MixedTrackIterator(const std::shared_ptr<const KZMTrack>& track,
                                       const TimeRange& range)
    : endOfTables_(endOfTables(*track)),
      tables_(track, range),
      fragments_(track, behind(*track, range, endOfTables_)) {}

bool MixedTrackIterator::hasSample() { return tables_.hasSample() || fragments_.hasSample(); }

Sample MixedTrackIterator::next() {
    if (tables_.hasSample()) return tables_.next();
    Sample sample = fragments_.next();
    sample.time += endOfTables_;
    return sample;
}

}  // namespace qlix::kzm::impl
