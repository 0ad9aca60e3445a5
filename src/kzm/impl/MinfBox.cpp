#include "kzm/impl/MinfBox.h"

#include <utility>

#include "kzm/impl/HmhdBox.h"
#include "kzm/impl/NmhdBox.h"
#include "kzm/impl/SmhdBox.h"
#include "kzm/impl/VmhdBox.h"

namespace qlix::kzm::impl {
namespace {

BoxPtr makeMediaHeader(const BoxContext& context, std::uint32_t handler) {
    switch (handler) {
        case fourCc("hint"):
            return makeBox<HmhdBox>(context);
        case fourCc("soun"):
            return makeBox<SmhdBox>(context);
        case fourCc("vide"):
            return makeBox<VmhdBox>(context);
        default:
            return makeBox<NmhdBox>(context);
    }
}

}  // namespace

MinfBox::MinfBox(const BoxContext& context, const TrackSettings& settings)
    : Box(context, fourCc("minf")) {
    MinfBox::addChild(makeMediaHeader(context, settings.handler));
    MinfBox::addChild(makeBox<DinfBox>(context));
    MinfBox::addChild(makeBox<StblBox>(context, settings));
}

MinfBox::MinfBox(const BoxContext& context, const BoxHeader& header) : Box(context, header) {
    resetSize();
}

void MinfBox::addChild(BoxPtr child) {
    Box* const added = child.get();
    Box::addChild(std::move(child));
    remember(dinf_, added);
    remember(stbl_, added);
}

}  // namespace qlix::kzm::impl
