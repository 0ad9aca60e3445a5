#include "kzs/BootstrapBuilder.h"

#include <algorithm>

#include "kzs/base/ByteOrder.h"
#include "kzs/base/Truncation.h"

namespace torvo::kzs {
namespace {

BootstrapInfo withEmptyTables() {
    BootstrapInfo info;
    info.segmentRunTables.emplace_back();
    info.fragmentRunTables.emplace_back();
    return info;
}

std::vector<SegmentRunEntry>& segmentsOf(BootstrapInfo& info) {
    return info.segmentRunTables.front().entries;
}

std::vector<FragmentRunEntry>& fragmentsOf(BootstrapInfo& info) {
    return info.fragmentRunTables.front().entries;
}

}  // namespace

BootstrapBuilder::BootstrapBuilder() : BootstrapBuilder(100.0, 1.0, 1000) {}

BootstrapBuilder::BootstrapBuilder(double durationPrecision, double frameDuration,
                                   std::uint32_t allowedDrift)
    : durationPrecision_(durationPrecision),
      frameDuration_(frameDuration),
      allowedDrift_(allowedDrift),
      bootstrap_(withEmptyTables()),
      fullBootstrap_(withEmptyTables()) {}

void BootstrapBuilder::addFragment(std::uint32_t segment, std::uint32_t fragment,
                                   const Timestamp& start, std::uint64_t duration) {
    if (lastSegment_ == kNothingYet) {
        lastFragment_ = 0;
        appendSegment(segment, 0);
        lastSegment_ = segment;
    }
    if (lastSegment_ == segment && !segmentsOf(bootstrap_).empty()) {
        countInLastSegment(segment, 1);
    } else {
        fillSegments(segment, false);
    }
    // On purpose: a first fragment that isn't number 1 has skipped none.
    // Pinned by BootstrapBuilderTest.CountsAFirstFragmentAboveOneAsOne.
    if (!fragmentsOf(bootstrap_).empty() && fragment > lastFragment_ + 1) {
        addSkippedFragments(segment, fragment - 1);
    }
    const std::uint32_t roundedDuration = rounded(duration);
    const FragmentRunEntry entry{fragment, start, roundedDuration, 0};
    if (lastDuration_ == roundedDuration && !hasDrifted(start.value)) {
        fullFragments_.append(entry);
        // On purpose: on from the expected time, not from the real one, so that many small
        // errors add up to a drift. Pinned by BootstrapBuilderTest.AddsUpSmallErrorsToADrift.
        expectedTime_ += roundedDuration;
    } else {
        append(entry);
        expectedTime_ = start.value + roundedDuration;
    }
    lastFragment_ = fragment;
    lastDuration_ = roundedDuration;
}

void BootstrapBuilder::addDiscontinuity(std::uint32_t segment, std::uint32_t fragment,
                                        const Timestamp& time) {
    // On purpose: a gap in front of the first fragment leaves no trace.
    // Pinned by BootstrapBuilderTest.LeavesNoTraceOfAGapBeforeTheFirstFragment.
    if (fragmentsOf(bootstrap_).empty()) return;
    if (fragment > lastFragment_ + 1) addSkippedFragments(segment, fragment - 1);
    if (!endsWithIndicator(kFragmentWithoutData)) {
        append({fragment, time, 0, kFragmentWithoutData});
    }
    // On purpose: counted in the last entry there is, even when the segment is a new one.
    // Pinned by BootstrapBuilderTest.CountsAGapInTheLastSegmentThatHasAnEntry.
    if (fragment != lastFragment_) countInLastSegment(lastSegment_, fragment - lastFragment_);
    lastFragment_ = fragment;
    // On purpose: the expected time stays, as if the gap were not there.
    // Pinned by BootstrapBuilderTest.ExpectsBehindAGapWhatItExpectedAheadOfIt.
    lastDuration_ = 0;
}

// On purpose: only in the compressed table, and the version stays.
// Pinned by BootstrapBuilderTest.MarksTheEndInTheCompressedTableOnly.
void BootstrapBuilder::markEnd() {
    fragmentsOf(bootstrap_).push_back({0, milliseconds(0), 0, kEndOfPresentation});
}

BootstrapInfo BootstrapBuilder::fullBootstrap() const {
    BootstrapInfo full = fullBootstrap_;
    fragmentsOf(full) = fullFragments_.entries();
    return full;
}

std::uint32_t BootstrapBuilder::rounded(std::uint64_t duration) const {
    const double exact = static_cast<double>(duration);
    const double quotient = low32(truncated(exact / durationPrecision_));
    const double remainder = exact - quotient * durationPrecision_;
    // On purpose: a tie goes up, and nothing becomes one whole unit.
    // Pinned by BootstrapBuilderTest.RoundsATieUp and .NeverRoundsToZero.
    const bool down = durationPrecision_ * 0.5 > remainder;
    const std::uint32_t result =
        low32(truncated((down ? quotient : quotient + 1) * durationPrecision_));
    return result != 0 ? result : low32(truncated(durationPrecision_));
}

bool BootstrapBuilder::hasDrifted(std::uint64_t time) const {
    const std::uint64_t drift = std::max(time, expectedTime_) - std::min(time, expectedTime_);
    // On purpose: exactly the allowed drift is none.
    // Pinned by BootstrapBuilderTest.StaysInTheRunAtExactlyTheAllowedDrift.
    return drift > allowedDrift_;
}

bool BootstrapBuilder::endsWithIndicator(std::uint32_t indicator) const {
    const FragmentRunEntry& last = bootstrap_.fragmentRunTables.front().entries.back();
    return last.fragmentDuration == 0 &&
           (last.discontinuityIndicator == indicator ||
            last.discontinuityIndicator == kFragmentsSkippedWithoutData);
}

void BootstrapBuilder::append(const FragmentRunEntry& entry) {
    fragmentsOf(bootstrap_).push_back(entry);
    fullFragments_.append(entry);
    ++bootstrap_.version;
    fullBootstrap_.version = bootstrap_.version;
}

void BootstrapBuilder::appendSegment(std::uint32_t segment, std::uint32_t fragments) {
    segmentsOf(bootstrap_).push_back({segment, fragments});
    segmentsOf(fullBootstrap_).push_back({segment, fragments});
}

// The two tables get the same entries from the first on, so both are empty or neither.
void BootstrapBuilder::countInLastSegment(std::uint32_t segment, std::uint32_t fragments) {
    if (segmentsOf(bootstrap_).empty()) {
        appendSegment(segment, fragments);
        return;
    }
    segmentsOf(bootstrap_).back().fragmentsPerSegment += fragments;
    segmentsOf(fullBootstrap_).back().fragmentsPerSegment += fragments;
}

// Returns how many fragment numbers were added to the segment's count. There is a fragment.
std::uint32_t BootstrapBuilder::addSkippedFragments(std::uint32_t segment, std::uint32_t upTo) {
    // On purpose: the smaller of the two. No test can tell: both callers come only where numbers
    // are missing.
    const std::uint32_t first = std::min(lastFragment_ + 1, upTo);
    if (!endsWithIndicator(kFragmentsSkipped)) {
        append({first, milliseconds(0), 0, kFragmentsSkipped});
    }
    if (lastSegment_ != segment) fillSegments(segment, true);
    std::uint32_t added = 0;
    if (upTo > lastFragment_) {
        added = upTo - lastFragment_;
        countInLastSegment(segment, added);
        lastFragment_ = upTo;
    }
    lastDuration_ = 0;
    return added;
}

// On purpose: one entry for each segment number, also those without a fragment.
// Pinned by BootstrapBuilderTest.HasAnEntryForEverySegment.
void BootstrapBuilder::fillSegments(std::uint32_t segment, bool noFragmentYet) {
    while (lastSegment_ < segment) {
        ++lastSegment_;
        appendSegment(lastSegment_, lastSegment_ == segment && !noFragmentYet ? 1 : 0);
    }
}

}  // namespace torvo::kzs
