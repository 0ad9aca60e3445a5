#pragma once

#include "kzm/impl/TableBox.h"

namespace qlix::kzm::impl {

/// A run of samples that last equally long.
struct SttsRow {
    std::uint64_t startTime = 0;    ///< decode time of the first sample, in ticks of the media
    std::uint32_t firstSample = 1;  ///< its number, from 1
    std::uint32_t count = 0;
    std::uint32_t delta = 0;  ///< ticks that each sample lasts
};

/// Decode times.
///
///   offset  size  field
///        0    12  full box header: 'stts', version 0, flags 0
///       12     4  row count
///       16   8 n  rows: sample count 4, delta 4
class SttsBox final : public TableBox {
public:
    /// Room for `capacity` samples. The last sample lasts `lastDelta` ticks.
    SttsBox(const BoxContext& context, std::uint32_t capacity, std::uint32_t lastDelta);
    SttsBox(const BoxContext& context, const BoxHeader& header);

    /// The open run and the last sample as rows of their own.
    void updateFields() override;
    /// Throws countTooLarge for a count above kSanityLimit.
    void readFields() override;

    /// Sums that don't fit are held at the largest value.
    const BoxVector<SttsRow>& rows() const { return rows_; }

    /// Takes the decode time of the next sample, not below that of the one before.
    void addSample(std::uint64_t time);

private:
    BoxVector<SttsRow> rows_;
    std::uint32_t lastDelta_ = 1;
    bool hasSample_ = false;
    std::uint64_t lastTime_ = 0;
    std::uint32_t runCount_ = 0;  // of the open run
    std::uint32_t runDelta_ = 0;
};

}  // namespace qlix::kzm::impl
