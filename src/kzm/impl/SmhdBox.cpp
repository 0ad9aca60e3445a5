#include "kzm/impl/SmhdBox.h"

namespace qlix::kzm::impl {
namespace {

constexpr std::uint64_t kSize = kFullBoxHeaderSize + 4;

}  // namespace

SmhdBox::SmhdBox(const BoxContext& context) : FullBox(context, fourCc("smhd"), 0, 0) {
    setFixedSize(kSize);
}

SmhdBox::SmhdBox(const BoxContext& context, const BoxHeader& header) : FullBox(context, header) {
    setFixedSize(kSize);
}

void SmhdBox::writeFields() {
    FieldWriter out;
    out.zeros(kSize - kFullBoxHeaderSize);
    put(out);
}

}  // namespace qlix::kzm::impl
