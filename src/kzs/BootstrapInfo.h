#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "kzs/base/Timestamp.h"

namespace torvo::kzs {

/// Discontinuity indicators of a fragment run entry. They mean something only where the entry's
/// duration is 0.
constexpr std::uint32_t kEndOfPresentation = 0;
constexpr std::uint32_t kFragmentWithoutData = 1;
constexpr std::uint32_t kFragmentsSkipped = 2;
/// Never written; counts for both of the two before it.
constexpr std::uint32_t kFragmentsSkippedWithoutData = 3;

struct SegmentRunEntry {
    std::uint32_t firstSegment = 0;
    std::uint32_t fragmentsPerSegment = 0;
};

/// Which fragments lie in which segment (`asrt`).
struct SegmentRunTable {
    bool update = false;
    std::vector<std::string> qualities;
    std::vector<SegmentRunEntry> entries;
};

/// A run of fragments with consecutive numbers and equal durations.
struct FragmentRunEntry {
    std::uint32_t firstFragment = 0;
    Timestamp firstFragmentTimestamp;
    std::uint32_t fragmentDuration = 0;
    std::uint32_t discontinuityIndicator = 0;  ///< one byte in a file, and only with duration 0
};

/// When the fragments start (`afrt`).
struct FragmentRunTable {
    std::uint32_t update = 0;  ///< used as a bool
    std::uint32_t timescale = 1000;
    std::vector<std::string> qualities;
    std::vector<FragmentRunEntry> entries;
};

/// The timetable of a fragmented presentation (`abst`).
struct BootstrapInfo {
    std::uint32_t version = 0;  ///< counts the changes of the fragment run table
    std::uint32_t profile = 0;  ///< two bits
    bool live = false;
    bool update = false;
    std::uint32_t timescale = 1000;
    Timestamp currentMediaTime;
    std::uint64_t smpteTimeCodeOffset = 0;
    std::string movieIdentifier;
    std::vector<std::string> servers;
    std::vector<std::string> qualities;
    std::string drmData;
    std::string metadata;
    std::vector<SegmentRunTable> segmentRunTables;
    std::vector<FragmentRunTable> fragmentRunTables;
};

/// Equal when all fields are; timestamps compare in the timescale of the left one.
bool operator==(const SegmentRunEntry& left, const SegmentRunEntry& right);
bool operator==(const SegmentRunTable& left, const SegmentRunTable& right);
bool operator==(const FragmentRunEntry& left, const FragmentRunEntry& right);
bool operator==(const FragmentRunTable& left, const FragmentRunTable& right);
bool operator==(const BootstrapInfo& left, const BootstrapInfo& right);
bool operator!=(const BootstrapInfo& left, const BootstrapInfo& right);

}  // namespace torvo::kzs
