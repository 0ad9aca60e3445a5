#include "kzs/BootstrapInfo.h"

namespace torvo::kzs {

bool operator==(const SegmentRunEntry& left, const SegmentRunEntry& right) {
    return left.firstSegment == right.firstSegment &&
           left.fragmentsPerSegment == right.fragmentsPerSegment;
}

bool operator==(const SegmentRunTable& left, const SegmentRunTable& right) {
    return left.update == right.update && left.qualities == right.qualities &&
           left.entries == right.entries;
}

bool operator==(const FragmentRunEntry& left, const FragmentRunEntry& right) {
    return left.firstFragment == right.firstFragment &&
           left.firstFragmentTimestamp == right.firstFragmentTimestamp &&
           left.fragmentDuration == right.fragmentDuration &&
           left.discontinuityIndicator == right.discontinuityIndicator;
}

bool operator==(const FragmentRunTable& left, const FragmentRunTable& right) {
    return (left.update != 0) == (right.update != 0) && left.timescale == right.timescale &&
           left.qualities == right.qualities && left.entries == right.entries;
}

bool operator==(const BootstrapInfo& left, const BootstrapInfo& right) {
    return left.version == right.version && left.profile == right.profile &&
           left.live == right.live && left.update == right.update &&
           left.timescale == right.timescale && left.currentMediaTime == right.currentMediaTime &&
           left.smpteTimeCodeOffset == right.smpteTimeCodeOffset &&
           left.movieIdentifier == right.movieIdentifier && left.servers == right.servers &&
           left.qualities == right.qualities && left.drmData == right.drmData &&
           left.metadata == right.metadata && left.segmentRunTables == right.segmentRunTables &&
           left.fragmentRunTables == right.fragmentRunTables;
}

bool operator!=(const BootstrapInfo& left, const BootstrapInfo& right) { return !(left == right); }

}  // namespace torvo::kzs
