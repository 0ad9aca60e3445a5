#include "kzm/impl/VmhdBox.h"

namespace qlix::kzm::impl {
namespace {

constexpr std::uint64_t kSize = kFullBoxHeaderSize + 8;

}  // namespace

VmhdBox::VmhdBox(const BoxContext& context) : FullBox(context, fourCc("vmhd"), 0, 1) {
    setFixedSize(kSize);
}

VmhdBox::VmhdBox(const BoxContext& context, const BoxHeader& header) : FullBox(context, header) {
    setFixedSize(kSize);
}

void VmhdBox::writeFields() {
    FieldWriter out;
    out.zeros(kSize - kFullBoxHeaderSize);
    put(out);
}

void VmhdBox::readFields() {
    FieldReader in = fields();
    in.need(kSize - kFullBoxHeaderSize);
    graphicsMode_ = in.u16();
    for (std::uint16_t& color : colors_) color = in.u16();
}

}  // namespace qlix::kzm::impl
