#pragma once

#include "kzm/impl/ChunkOffsetBox.h"

namespace qlix::kzm::impl {

/// Chunk offsets in 32 bits. Read only: `co64` is written.
///
///   offset  size  field
///        0    12  full box header: 'stco'
///       12     4  row count
///       16   4 n  positions in the file
class StcoBox final : public ChunkOffsetBox {
public:
    StcoBox(const BoxContext& context, const BoxHeader& header)
        : ChunkOffsetBox(context, header, 4) {}
};

}  // namespace qlix::kzm::impl
