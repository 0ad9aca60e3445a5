#include "kzm/impl/MoofBox.h"

#include <utility>

#include "kzm/impl/RootBox.h"
#include "kzm/impl/TrafBox.h"

namespace qlix::kzm::impl {
MoofBox::MoofBox(const BoxContext& context, std::uint32_t sequenceNumber)
    : Box(context, fourCc("moof")) {
    addChild(makeBox<MfhdBox>(context, sequenceNumber));
}

MoofBox::MoofBox(const BoxContext& context, const BoxHeader& header) : Box(context, header) {
    setFixedSize(kBoxHeaderSize);
}

void MoofBox::addChild(BoxPtr child) {
    if (auto* mfhd = dynamic_cast<MfhdBox*>(child.get())) mfhd_ = mfhd;
    Box::addChild(std::move(child));
}

void MoofBox::readChildren(RootBox* root, bool validate) {
    FragmentState state;
    state.moofStart = position();
    for (std::size_t i = 0; i < childCount(); ++i) {
        Box& each = *heldChild(i);
        auto* traf = each.type() == fourCc("traf") ? dynamic_cast<TrafBox*>(&each) : nullptr;
        if (traf != nullptr) traf->setFragmentState(&state);
        each.parse(root, validate);
        if (traf != nullptr) traf->setFragmentState(nullptr);
    }
    // On purpose: a fragment that is the very first box of a file doesn't count for those behind
    // it, since the search for the last fragment of a track never comes to the first child.
    // Pinned by TrafBoxTest.AFragmentThatBeginsTheFileDoesNotCountForLaterOnes.
    if (root == nullptr || root->childCount() == 0) return;
    for (const auto& [trackId, end] : state.endOfTrack) root->setTrackEnd(trackId, end);
}

}  // namespace qlix::kzm::impl
