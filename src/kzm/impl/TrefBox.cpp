#include "kzm/impl/TrefBox.h"

#include <utility>

namespace qlix::kzm::impl {

TrefBox::TrefBox(const BoxContext& context, const std::vector<std::uint32_t>& hintedTrackIds)
    : Box(context, fourCc("tref")) {
    TrefBox::addChild(makeBox<HintBox>(context, hintedTrackIds));
}

TrefBox::TrefBox(const BoxContext& context, const BoxHeader& header) : Box(context, header) {
    resetSize();
}

void TrefBox::addChild(BoxPtr child) {
    auto* hint = dynamic_cast<HintBox*>(child.get());
    Box::addChild(std::move(child));
    if (hint != nullptr) hint_ = hint;
}

}  // namespace qlix::kzm::impl
