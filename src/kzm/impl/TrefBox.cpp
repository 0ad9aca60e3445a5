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
    Box* const added = child.get();
    Box::addChild(std::move(child));
    remember(hint_, added);
}

}  // namespace qlix::kzm::impl
