#pragma once

#include <cstdint>
#include <memory>

#include "kzm/impl/BoxVector.h"
#include "kzm/impl/ChunkOffsetIterator.h"
#include "kzm/impl/TableBox.h"

namespace qlix::kzm::impl {

/// What the two boxes of chunk offsets share: one has rows of 32 bits, the other of 64.
class ChunkOffsetBox : public TableBox, public IChunkOffsetBox {
public:
    /// Throws tableTooLarge for a count above kSanityLimit.
    void readFields() override;

    const BoxVector<std::uint64_t>& offsets() const { return offsets_; }
    std::unique_ptr<ChunkOffsetIterator> offsetsFrom(std::uint32_t chunk) const override;

protected:
    /// Room for `capacity` chunks. `rowSize` is 4 or 8.
    ChunkOffsetBox(const BoxContext& context, std::uint32_t type, std::uint64_t rowSize,
                   std::uint32_t capacity);
    ChunkOffsetBox(const BoxContext& context, const BoxHeader& header, std::uint64_t rowSize);

private:
    std::uint64_t rowSize_;
    BoxVector<std::uint64_t> offsets_;
};

}  // namespace qlix::kzm::impl
