#pragma once

#include "kzm/impl/ChunkOffsetBox.h"

namespace qlix::kzm::impl {

/// Chunk offsets in 64 bits.
///
///   offset  size  field
///        0    12  full box header: 'co64', version 0, flags 0
///       12     4  row count
///       16   8 n  positions in the file
class Co64Box final : public ChunkOffsetBox {
public:
    /// Room for `capacity` chunks.
    Co64Box(const BoxContext& context, std::uint32_t capacity);
    Co64Box(const BoxContext& context, const BoxHeader& header);

    void addChunk(std::uint64_t offset);
};

}  // namespace qlix::kzm::impl
