#include "kzm/impl/MfhdBox.h"

namespace qlix::kzm::impl {

MfhdBox::MfhdBox(const BoxContext& context, std::uint32_t sequenceNumber)
    : FullBox(context, fourCc("mfhd"), 0, 0), sequenceNumber_(sequenceNumber) {
    setFixedSize(kSize);
}

MfhdBox::MfhdBox(const BoxContext& context, const BoxHeader& header) : FullBox(context, header) {
    setFixedSize(kSize);
}

void MfhdBox::readFields() {
    FieldReader in = fields();
    sequenceNumber_ = in.u32();
}

void MfhdBox::writeFields() {
    FieldWriter out;
    out.u32(sequenceNumber_);
    put(out);
}

}  // namespace qlix::kzm::impl
