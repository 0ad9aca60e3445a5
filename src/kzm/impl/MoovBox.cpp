#include "kzm/impl/MoovBox.h"

#include <utility>

namespace qlix::kzm::impl {

MoovBox::MoovBox(const BoxContext& context, const BoxHeader& header) : Box(context, header) {
    resetSize();
}

void MoovBox::addChild(BoxPtr child) {
    Box* const added = child.get();
    Box::addChild(std::move(child));
    remember(mvhd_, added);
    if (mvex_ == nullptr) remember(mvex_, added);
    if (auto* trak = dynamic_cast<TrakBox*>(added)) tracks_.push_back(trak);
}

}  // namespace qlix::kzm::impl
