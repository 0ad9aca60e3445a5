#pragma once

#include "kzm/impl/ChunkOffsetIterator.h"
#include "kzm/impl/TableBox.h"

namespace qlix::kzm::impl {

/// Chunk offsets: rows of a file offset, 4 bytes each. Read only: `co64` is written.
class StcoBox final : public TableBox, public IChunkOffsetBox {
public:
    StcoBox(const BoxContext& context, const BoxHeader& header);

    /// Throws tableTooLarge for a count above kSanityLimit.
    void readFields() override;

    const BoxVector<std::uint64_t>& offsets() const { return offsets_; }
    std::unique_ptr<ChunkOffsetIterator> offsetsFrom(std::uint32_t chunk) const override;

private:
    BoxVector<std::uint64_t> offsets_;
};

}  // namespace qlix::kzm::impl
