#include "kzm/impl/MvexBox.h"

#include <utility>

#include "kzm/impl/TrexBox.h"

namespace qlix::kzm::impl {

MvexBox::MvexBox(const BoxContext& context, std::uint64_t duration) : Box(context, fourCc("mvex")) {
    addChild(makeBox<MehdBox>(context, duration));
}

MvexBox::MvexBox(const BoxContext& context, const BoxHeader& header) : Box(context, header) {
    resetSize();
}

void MvexBox::addChild(BoxPtr child) {
    Box* const added = child.get();
    Box::addChild(std::move(child));
    remember(mehd_, added);
}

const TrexBox* MvexBox::defaultsOf(std::uint32_t trackId) {
    indexDefaults();
    const auto found = defaults_.find(trackId);
    return found == defaults_.end() ? nullptr : found->second;
}

void MvexBox::indexDefaults() {
    for (; indexedChildren_ < childCount(); ++indexedChildren_) {
        const auto* trex = dynamic_cast<const TrexBox*>(heldChild(indexedChildren_));
        if (trex != nullptr) defaults_.emplace(trex->trackId(), trex);
    }
}

}  // namespace qlix::kzm::impl
