#include "kzm/impl/SkipBox.h"

namespace qlix::kzm::impl {

SkipBox::SkipBox(const BoxContext& context, std::uint64_t size) : Box(context, fourCc("skip")) {
    setFixedSize(size);
}

SkipBox::SkipBox(const BoxContext& context, const BoxHeader& header) : Box(context, header) {}

void SkipBox::writeFields() {
    if (hasZeros_) return;
    hasZeros_ = true;
    FieldWriter out;
    out.zeros(static_cast<std::size_t>(ownSize() - kBoxHeaderSize));
    putAt(kBoxHeaderSize, out);
}

void SkipBox::updateFields() {
    if (!hasMoved_) return;
    hasMoved_ = false;
    stream().seek(position());
    writeHeader();
}

void SkipBox::dropFront(std::uint64_t count) {
    setFixedSize(ownSize() - count);
    setPosition(position() + count);
    hasMoved_ = true;
}

}  // namespace qlix::kzm::impl
