#pragma once

#include "kzm/impl/ElstBox.h"

namespace qlix::kzm::impl {

/// Edits: a container of `elst`.
class EdtsBox final : public Box {
public:
    /// Makes the `elst` too, with room for 2 x `maxEdits` + 1 rows.
    EdtsBox(const BoxContext& context, std::uint32_t maxEdits);
    EdtsBox(const BoxContext& context, const BoxHeader& header);

    void addChild(BoxPtr child) override;

    /// Null when there is none.
    ElstBox* elst() const { return elst_; }

private:
    ElstBox* elst_ = nullptr;  // one of the children
};

}  // namespace qlix::kzm::impl
