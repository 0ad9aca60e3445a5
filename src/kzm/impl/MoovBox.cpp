#include "kzm/impl/MoovBox.h"

#include <utility>

namespace qlix::kzm::impl {

MoovBox::MoovBox(const BoxContext& context, const BoxHeader& header) : Box(context, header) {
    resetSize();
}

void MoovBox::addChild(BoxPtr child) {
    auto* mvhd = dynamic_cast<MvhdBox*>(child.get());
    auto* trak = dynamic_cast<TrakBox*>(child.get());
    auto* mvex = dynamic_cast<MvexBox*>(child.get());
    Box::addChild(std::move(child));
    if (mvex != nullptr && mvex_ == nullptr) mvex_ = mvex;
    if (mvhd != nullptr) mvhd_ = mvhd;
    if (trak != nullptr) tracks_.push_back(trak);
}

}  // namespace qlix::kzm::impl
