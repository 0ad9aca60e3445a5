#pragma once

#include "kzm/impl/HintBox.h"

namespace qlix::kzm::impl {

/// Track references: a container of `hint`.
class TrefBox final : public Box {
public:
    /// Makes the `hint` too.
    TrefBox(const BoxContext& context, const std::vector<std::uint32_t>& hintedTrackIds);
    TrefBox(const BoxContext& context, const BoxHeader& header);

    void addChild(BoxPtr child) override;

    /// Null when there is none.
    HintBox* hint() const { return hint_; }

private:
    HintBox* hint_ = nullptr;  // one of the children
};

}  // namespace qlix::kzm::impl
