#include "kzm/impl/MfraBox.h"

#include <utility>

#include "kzm/impl/MfroBox.h"

namespace qlix::kzm::impl {
namespace {

const RequiredChild kRequired[] = {
    {fourCc("mfro"), RequiredChild::Kind::exactlyOne, nullptr},
};

}  // namespace

MfraBox::MfraBox(const BoxContext& context) : Box(context, fourCc("mfra")) {}

RequiredChildren MfraBox::requiredChildren() const { return {kRequired, 1}; }

void MfraBox::writeFields() {
    auto last = makeBox<MfroBox>(context(), 0U);
    MfroBox& mfro = *last;
    addChild(std::move(last));
    mfro.setIndexSize(torvo::kzs::low32(size()));
}

}  // namespace qlix::kzm::impl
