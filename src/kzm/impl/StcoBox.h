#pragma once

#include "kzm/impl/TableBox.h"

namespace qlix::kzm::impl {

/// Chunk offsets: rows of a file offset, 4 bytes each. Read only: `co64` is written.
class StcoBox final : public TableBox {
public:
    StcoBox(const BoxContext& context, const BoxHeader& header);

    /// Throws tableTooLarge for a count above kSanityLimit.
    void readFields() override;

    const BoxVector<std::uint64_t>& offsets() const { return offsets_; }

private:
    BoxVector<std::uint64_t> offsets_;
};

}  // namespace qlix::kzm::impl
