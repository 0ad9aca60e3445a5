#include "kzm/impl/MehdBox.h"

namespace qlix::kzm::impl {
namespace {

constexpr std::uint64_t kShortSize = kFullBoxHeaderSize + 4;

}  // namespace

MehdBox::MehdBox(const BoxContext& context, std::uint64_t duration)
    : FullBox(context, fourCc("mehd"), 1, 0), duration_(duration) {
    setFixedSize(kSize);
}

MehdBox::MehdBox(const BoxContext& context, const BoxHeader& header) : FullBox(context, header) {
    setFixedSize(version() != 0 ? kSize : kShortSize);
}

void MehdBox::readFields() {
    FieldReader in = fields();
    duration_ = in.word(version() == 1);
}

void MehdBox::writeFields() {
    FieldWriter out;
    out.u64(duration_);
    put(out);
}

void MehdBox::updateFields() {
    FieldWriter out;
    out.u64(duration_);
    putAt(kFullBoxHeaderSize, out);
}

}  // namespace qlix::kzm::impl
