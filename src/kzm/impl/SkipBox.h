#pragma once

#include "kzm/impl/Box.h"

namespace qlix::kzm::impl {

/// Room that is kept free.
///
///   offset  size  field
///        0     8  box header: 'skip'
///        8     n  zeros
class SkipBox final : public Box {
public:
    /// `size` counts the header and is 8 at least.
    SkipBox(const BoxContext& context, std::uint64_t size);
    SkipBox(const BoxContext& context, const BoxHeader& header);

    void writeFields() override;
    /// Rewrites the header only, where it changed: the bytes behind it are zeros already.
    void updateFields() override;

    /// Gives up the first `count` bytes; at least a header must be left.
    void dropFront(std::uint64_t count);

private:
    bool hasZeros_ = false;
    bool hasMoved_ = false;  // since the header was written
};

}  // namespace qlix::kzm::impl
