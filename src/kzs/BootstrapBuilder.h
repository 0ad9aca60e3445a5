#pragma once

#include <cstdint>

#include "kzs/BootstrapInfo.h"
#include "kzs/FragmentList.h"

namespace torvo::kzs {

/// Collects the fragments of a presentation, in order, into the run-length compressed tables of a
/// BootstrapInfo.
///
/// A run goes on while fragments have the same rounded duration and their times stay within the
/// allowed drift of what the run predicts. Every segment has one entry with the count of fragment
/// numbers in it. Times and durations are in milliseconds. Throws std::bad_alloc only.
class BootstrapBuilder {
public:
    BootstrapBuilder();
    /// `durationPrecision` is the unit to which durations are rounded, above 0. `frameDuration`
    /// is kept for others.
    BootstrapBuilder(double durationPrecision, double frameDuration, std::uint32_t allowedDrift);

    /// Registers a fragment that has data. Numbers that were jumped over are recorded as skipped.
    void addFragment(std::uint32_t segment, std::uint32_t fragment, const Timestamp& start,
                     std::uint64_t duration);
    /// Registers a fragment number that has no data of its own. Before the first fragment it
    /// leaves no trace.
    void addDiscontinuity(std::uint32_t segment, std::uint32_t fragment, const Timestamp& time);
    /// Marks the presentation as complete. To be called once, at the end.
    void markEnd();

    /// The compressed tables, the ones that are written. The caller may set the fields that
    /// describe the presentation as a whole, not the tables.
    BootstrapInfo& bootstrap() { return bootstrap_; }
    const BootstrapInfo& bootstrap() const { return bootstrap_; }
    /// The same with one entry for every fragment; no end mark. Nothing writes it, so the entries
    /// are kept in little memory and made anew at each call.
    BootstrapInfo fullBootstrap() const;

    double durationPrecision() const { return durationPrecision_; }
    double frameDuration() const { return frameDuration_; }
    std::uint32_t allowedDrift() const { return allowedDrift_; }

private:
    static constexpr std::uint32_t kNothingYet = 0xFFFFFFFF;

    std::uint32_t rounded(std::uint64_t duration) const;
    bool hasDrifted(std::uint64_t time) const;
    bool endsWithIndicator(std::uint32_t indicator) const;
    void append(const FragmentRunEntry& entry);
    void appendSegment(std::uint32_t segment, std::uint32_t fragments);
    void countInLastSegment(std::uint32_t segment, std::uint32_t fragments);
    std::uint32_t addSkippedFragments(std::uint32_t segment, std::uint32_t upTo);
    void fillSegments(std::uint32_t segment, bool noFragmentYet);

    double durationPrecision_;
    double frameDuration_;
    std::uint32_t allowedDrift_;
    BootstrapInfo bootstrap_;
    BootstrapInfo fullBootstrap_;  // its fragment table is empty:
    FragmentList fullFragments_;   // these are its entries
    std::uint32_t lastSegment_ = kNothingYet;
    std::uint32_t lastFragment_ = kNothingYet;
    std::uint32_t lastDuration_ = kNothingYet;
    std::uint64_t expectedTime_ = 0;
};

}  // namespace torvo::kzs
