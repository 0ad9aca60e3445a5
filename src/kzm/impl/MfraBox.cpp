#include "kzm/impl/MfraBox.h"

#include <utility>

#include "kzm/impl/MfroBox.h"

namespace qlix::kzm::impl {

MfraBox::MfraBox(const BoxContext& context) : Box(context, fourCc("mfra")) {}

void MfraBox::writeFields() {
    auto last = makeBox<MfroBox>(context(), 0U);
    MfroBox& mfro = *last;
    addChild(std::move(last));
    mfro.setIndexSize(torvo::kzs::low32(size()));
}

}  // namespace qlix::kzm::impl
