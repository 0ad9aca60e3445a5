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
    Box* const added = child.get();
    Box::addChild(std::move(child));
    remember(elst_, added);
}

}  // namespace qlix::kzm::impl
