#pragma once

#include "kzm/impl/TableBox.h"

namespace qlix::kzm::impl {

/// A run of chunks that are alike.
struct StscRow {
    std::uint32_t firstChunk = 1;  ///< from 1
    std::uint32_t chunkCount = 0;  ///< 0xFFFFFFFF in the last row
    std::uint32_t samplesPerChunk = 0;
    std::uint32_t descriptionIndex = 0;  ///< in `stsd`, from 1
    std::uint32_t firstSample = 1;       ///< number of the first sample of the first chunk
};

/// Samples to chunks.
///
///   offset  size  field
///        0    12  full box header: 'stsc', version 0, flags 0
///       12     4  row count
///       16  12 n  rows: first chunk 4, samples a chunk 4, description index 4
class StscBox final : public TableBox {
public:
    /// Room for `capacity` chunks.
    StscBox(const BoxContext& context, std::uint32_t capacity);
    StscBox(const BoxContext& context, const BoxHeader& header);

    /// Throws chunksOutOfOrder when the first row doesn't begin with chunk 1, a first chunk is
    /// below the one before it, or a chunk has no samples.
    void readFields() override;

    /// First samples that don't fit are held at the largest value.
    const BoxVector<StscRow>& rows() const { return rows_; }

    void addChunk(std::uint32_t chunk, std::uint32_t samples, std::uint32_t descriptionIndex);

private:
    void link();

    BoxVector<StscRow> rows_;
};

}  // namespace qlix::kzm::impl
