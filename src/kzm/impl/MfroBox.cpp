#include "kzm/impl/MfroBox.h"

namespace qlix::kzm::impl {

MfroBox::MfroBox(const BoxContext& context, std::uint32_t indexSize)
    : FullBox(context, fourCc("mfro"), 0, 0), indexSize_(indexSize) {
    setFixedSize(kSize);
}

void MfroBox::writeFields() {
    FieldWriter out;
    out.u32(indexSize_);
    put(out);
}

}  // namespace qlix::kzm::impl
