#pragma once

#include <cstdint>
#include <map>
#include <optional>

#include "kzm/impl/Box.h"
#include "kzm/impl/TfhdBox.h"
#include "kzm/impl/TrunBox.h"

namespace qlix::kzm::impl {

/// What the `traf` boxes of one `moof` learn from those read before them.
struct FragmentState {
    std::uint64_t moofStart = 0;
    std::optional<std::uint64_t> dataEnd;               ///< of the `traf` before; none: the first
    std::map<std::uint32_t, std::uint64_t> endOfTrack;  ///< end times by track id
};

/// Track fragment: the samples of one track in one fragment.
///
///   offset  size  field
///        0     8  box header: 'traf'
///        8    28  'tfhd'
///        .     .  'trun' boxes
class TrafBox final : public Box {
public:
    enum class Added {
        refused,   ///< another sample description: the fragment has to be closed first
        appended,  ///< the last run goes on
        newRun,    ///< a run was begun
    };

    /// Makes the `tfhd` too. `baseOffset` is what the offsets of all runs count from.
    TrafBox(const BoxContext& context, std::uint32_t trackId, std::uint64_t baseOffset,
            std::uint32_t descriptionIndex);
    TrafBox(const BoxContext& context, const BoxHeader& header);

    void addChild(BoxPtr child) override;
    RequiredChildren requiredChildren() const override { return requiredChildrenOf(type()); }

    /// Throws writeFailed when the sample lies too far from the base for the 32 bits of a data
    /// offset.
    Added addSample(const FragmentSample& sample);

    /// Null when there is none.
    TfhdBox* tfhd() const { return tfhd_; }
    TrunBox* lastRun() const { return lastRun_; }

    /// Decode time of the first sample. Reading finds it by what was read before; once it is set,
    /// that isn't looked at any more.
    std::uint64_t startTime() const { return startTime_.value_or(0); }
    void setStartTime(std::uint64_t ticks) { startTime_ = ticks; }

    /// `state` is that of the `moof`; null for a box on its own. Not kept beyond the reading.
    void setFragmentState(FragmentState* state) { state_ = state; }
    /// Reads header and runs, places the samples and gives them their decode times. Runs that
    /// follow each other are held as one, unless one counts many samples in few bytes.
    ///
    /// Throws noFragmentHeader without a `tfhd`; with a root childrenMissing without an `mvex`
    /// and noTrackDefaults without a `trex` for the track.
    void readChildren(RootBox* root, bool validate) override;

private:
    void takeDefaults(RootBox& root);
    std::uint64_t baseOffset() const;
    std::uint64_t findStartTime(RootBox* root) const;
    void joinRuns();

    TfhdBox* tfhd_ = nullptr;     // one of the children
    TrunBox* lastRun_ = nullptr;  // one of the children
    std::uint64_t writingBase_ = 0;
    std::optional<std::uint64_t> startTime_;  // of a box that was read
    FragmentState* state_ = nullptr;          // the moof's, while it reads
};

}  // namespace qlix::kzm::impl
