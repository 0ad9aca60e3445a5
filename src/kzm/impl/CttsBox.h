#pragma once

#include "kzm/impl/TableBox.h"

namespace qlix::kzm::impl {

/// A run of samples with one composition offset.
struct CttsRow {
    std::uint32_t count = 0;
    std::uint32_t offset = 0;  ///< ticks of the media, 32 bits as they stand in the file
    std::uint32_t firstSample = 1;
};

/// Composition offsets.
///
///   offset  size  field
///        0    12  full box header: 'ctts', version 0, flags 0
///       12     4  row count
///       16   8 n  rows: sample count 4, offset 4
///
/// Offsets of version 1, which are signed, are passed on in their 32 bits.
class CttsBox final : public TableBox {
public:
    /// Room for `capacity` samples.
    CttsBox(const BoxContext& context, std::uint32_t capacity);
    CttsBox(const BoxContext& context, const BoxHeader& header);

    /// The open run as a row.
    void updateFields() override;
    /// Throws countTooLarge for a count above kSanityLimit, sampleNumberTooLarge when the sample
    /// numbers don't fit in 32 bits.
    void readFields() override;

    const BoxVector<CttsRow>& rows() const { return rows_; }

    void addSample(std::uint32_t offset);

private:
    BoxVector<CttsRow> rows_;
    std::uint32_t runCount_ = 0;  // of the open run
    std::uint32_t runOffset_ = 0;
};

}  // namespace qlix::kzm::impl
