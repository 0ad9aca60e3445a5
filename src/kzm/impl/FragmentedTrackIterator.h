#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "kzm/Sample.h"
#include "kzm/impl/FragmentIndex.h"
#include "kzm/impl/SampleTime.h"

namespace qlix::kzm::impl {

class TrunBox;

/// Walks the samples of a track through the fragments, in decode order, and reads the file as it
/// goes. It knows nothing of edit lists.
///
/// Ends at the first sample outside of the range, and before that where a fragment names a
/// description that isn't there.
class FragmentedTrackIterator final : public SampleIterator {
public:
    /// The document outlives the iterator.
    FragmentedTrackIterator(std::shared_ptr<const KZMTrack> track, const TimeRange& range);

    bool hasSample() override;
    Sample next() override;

private:
    void place(std::uint64_t start);
    void enterTraf();
    bool findRun();
    void settle();

    Track handle_;
    const KZMTrack& track_;
    std::uint64_t end_;  // ticks of the media
    std::size_t entry_ = 0;
    std::uint32_t sequenceNumber_ = 0;
    FragmentIndex::Entered fragment_;  // no traf at the end
    std::size_t child_ = 0;            // of the traf
    const TrunBox* run_ = nullptr;     // has the current sample; null at the end
    std::uint32_t position_ = 0;       // in the run
};

}  // namespace qlix::kzm::impl
