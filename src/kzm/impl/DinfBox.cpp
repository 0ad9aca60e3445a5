#include "kzm/impl/DinfBox.h"

#include <utility>

namespace qlix::kzm::impl {

DinfBox::DinfBox(const BoxContext& context) : Box(context, fourCc("dinf")) {
    DinfBox::addChild(makeBox<DrefBox>(context));
}

DinfBox::DinfBox(const BoxContext& context, const BoxHeader& header) : Box(context, header) {
    resetSize();
}

void DinfBox::addChild(BoxPtr child) {
    Box* const added = child.get();
    Box::addChild(std::move(child));
    remember(dref_, added);
}

}  // namespace qlix::kzm::impl
