#pragma once

#include "kzm/impl/SyncSampleIterator.h"
#include "kzm/impl/TableBox.h"

namespace qlix::kzm::impl {

/// Sync samples.
///
///   offset  size  field
///        0    12  full box header: 'stss', version 0, flags 0
///       12     4  row count
///       16   4 n  sample numbers, from 1
class StssBox final : public TableBox, public ISyncSampleBox {
public:
    /// Room for `capacity` samples.
    StssBox(const BoxContext& context, std::uint32_t capacity);
    StssBox(const BoxContext& context, const BoxHeader& header);

    /// Throws tableTooLarge for a count above kSanityLimit.
    void readFields() override;

    const BoxVector<std::uint32_t>& sampleNumbers() const { return sampleNumbers_; }
    std::unique_ptr<SyncSampleIterator> syncSamplesFrom(std::uint32_t sample) const override;

    void addSample(std::uint32_t number);

private:
    BoxVector<std::uint32_t> sampleNumbers_;
};

}  // namespace qlix::kzm::impl
