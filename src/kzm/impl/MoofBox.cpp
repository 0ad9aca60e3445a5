#include "kzm/impl/MoofBox.h"

#include <utility>

#include "kzm/impl/TrafBox.h"

namespace qlix::kzm::impl {
namespace {

const RequiredChild kRequired[] = {
    {fourCc("mfhd"), RequiredChild::Kind::exactlyOne, nullptr},
};

}  // namespace

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

RequiredChildren MoofBox::requiredChildren() const { return {kRequired, 1}; }

void MoofBox::readChildren(RootBox* root, bool validate) {
    FragmentState state;
    state.moofStart = position();
    for (std::size_t i = 0; i < childCount(); ++i) {
        Box* each = heldChild(i);
        auto* traf = dynamic_cast<TrafBox*>(each);
        if (traf != nullptr) traf->setFragmentState(&state);
        each->parse(root, validate);
        if (traf != nullptr) traf->setFragmentState(nullptr);
    }
}

}  // namespace qlix::kzm::impl
