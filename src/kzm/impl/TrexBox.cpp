#include "kzm/impl/TrexBox.h"

namespace qlix::kzm::impl {

TrexBox::TrexBox(const BoxContext& context, std::uint32_t trackId)
    : FullBox(context, fourCc("trex"), 0, 0), trackId_(trackId) {
    setFixedSize(kSize);
}

TrexBox::TrexBox(const BoxContext& context, const BoxHeader& header) : FullBox(context, header) {
    setFixedSize(kSize);
}

void TrexBox::readFields() {
    FieldReader in = fields();
    in.need(kSize - kFullBoxHeaderSize);
    trackId_ = in.u32();
    descriptionIndex_ = in.u32();
    defaultDuration_ = in.u32();
    defaultSize_ = in.u32();
    defaultFlags_ = in.u32();
}

void TrexBox::writeFields() {
    FieldWriter out;
    out.u32(trackId_);
    out.u32(1);
    out.u32(1);
    out.u32(1);
    out.u32(1);
    put(out);
}

}  // namespace qlix::kzm::impl
