#pragma once

#include "kzm/impl/ChunkOffsetBox.h"

namespace qlix::kzm::impl {

/// Chunk offsets of 8 bytes each.
class Co64Box final : public ChunkOffsetBox {
public:
    /// Room for `capacity` chunks.
    Co64Box(const BoxContext& context, std::uint32_t capacity);
    Co64Box(const BoxContext& context, const BoxHeader& header);

    void addChunk(std::uint64_t offset);
};

}  // namespace qlix::kzm::impl
