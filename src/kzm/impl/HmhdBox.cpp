#include "kzm/impl/HmhdBox.h"

namespace qlix::kzm::impl {
namespace {

constexpr std::uint64_t kSize = kFullBoxHeaderSize + 16;

}  // namespace

HmhdBox::HmhdBox(const BoxContext& context) : FullBox(context, fourCc("hmhd"), 0, 0) {
    setFixedSize(kSize);
}

void HmhdBox::writeFields() {
    FieldWriter out;
    out.zeros(kSize - kFullBoxHeaderSize);
    put(out);
}

}  // namespace qlix::kzm::impl
