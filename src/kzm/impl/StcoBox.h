#pragma once

#include "kzm/impl/ChunkOffsetBox.h"

namespace qlix::kzm::impl {

/// Chunk offsets of 4 bytes each. Read only: `co64` is written.
class StcoBox final : public ChunkOffsetBox {
public:
    StcoBox(const BoxContext& context, const BoxHeader& header)
        : ChunkOffsetBox(context, header, 4) {}
};

}  // namespace qlix::kzm::impl
