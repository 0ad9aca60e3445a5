#include "kzm/impl/EdtsBox.h"

#include <utility>

namespace qlix::kzm::impl {

EdtsBox::EdtsBox(const BoxContext& context, std::uint32_t maxEdits) : Box(context, fourCc("edts")) {
    EdtsBox::addChild(makeBox<ElstBox>(context, maxEdits));
}

EdtsBox::EdtsBox(const BoxContext& context, const BoxHeader& header) : Box(context, header) {
    resetSize();
}

void EdtsBox::addChild(BoxPtr child) {
    auto* elst = dynamic_cast<ElstBox*>(child.get());
    Box::addChild(std::move(child));
    if (elst != nullptr) elst_ = elst;
}

}  // namespace qlix::kzm::impl
