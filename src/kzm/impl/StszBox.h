#pragma once

#include "kzm/impl/SampleSizeIterator.h"
#include "kzm/impl/TableBox.h"

namespace qlix::kzm::impl {

/// Sample sizes.
///
///   offset  size  field              written
///        0    12  full box header    'stsz', version 0, flags 0
///       12     4  fixed size         0: each sample has its own
///       16     4  sample count
///       20   4 n  sizes, only if the fixed size is 0
class StszBox final : public TableBox, public ISampleSizeBox {
public:
    /// Room for `capacity` samples.
    StszBox(const BoxContext& context, std::uint32_t capacity);
    StszBox(const BoxContext& context, const BoxHeader& header);

    /// Throws tableTooLarge for a count above kSanityLimit.
    void readFields() override;

    /// 0 when each sample has its own size.
    std::uint32_t fixedSize() const { return fixedSize_; }
    /// Samples of a box that was read.
    std::uint32_t sampleCount() const { return sampleCount_; }
    /// Empty when there is a fixed size.
    const BoxVector<std::uint32_t>& sizes() const { return sizes_; }
    std::unique_ptr<SampleSizeIterator> sizesFrom(std::uint32_t sample) const override;

    void addSample(std::uint32_t size);

private:
    std::uint32_t fixedSize_ = 0;
    std::uint32_t sampleCount_ = 0;
    BoxVector<std::uint32_t> sizes_;
};

}  // namespace qlix::kzm::impl
