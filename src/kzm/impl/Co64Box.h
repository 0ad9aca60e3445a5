#pragma once

#include "kzm/impl/ChunkOffsetIterator.h"
#include "kzm/impl/TableBox.h"

namespace qlix::kzm::impl {

/// Chunk offsets: rows of a file offset, 8 bytes each.
class Co64Box final : public TableBox, public IChunkOffsetBox {
public:
    /// Room for `capacity` chunks.
    Co64Box(const BoxContext& context, std::uint32_t capacity);
    Co64Box(const BoxContext& context, const BoxHeader& header);

    /// Throws tableTooLarge for a count above kSanityLimit.
    void readFields() override;

    const BoxVector<std::uint64_t>& offsets() const { return offsets_; }
    std::unique_ptr<ChunkOffsetIterator> offsetsFrom(std::uint32_t chunk) const override;

    void addChunk(std::uint64_t offset);

private:
    BoxVector<std::uint64_t> offsets_;
};

}  // namespace qlix::kzm::impl
