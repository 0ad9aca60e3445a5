#include "kzm/impl/MdatBox.h"

#include <utility>
#include <vector>

namespace qlix::kzm::impl {

MdatBox::MdatBox(const BoxContext& context, bool isBuffered)
    : Box(context, fourCc("mdat"), true),
      isBuffered_(isBuffered),
      blocks_(HeapOf<SampleBlock>(context.allocator)) {}

MdatBox::MdatBox(const BoxContext& context, const BoxHeader& header)
    : Box(context, header), blocks_(HeapOf<SampleBlock>(context.allocator)) {}

MdatBox::~MdatBox() {
    while (!blocks_.empty()) blocks_.pop_back();
}

std::uint64_t MdatBox::addSample(SampleBlock block) {
    const std::uint64_t offset = position() + ownSize();
    const std::uint64_t size = block.size();
    if (isBuffered_) {
        blocks_.push_back(std::move(block));
    } else {
        stream().seek(offset);
        stream().write(block.data(), size);
    }
    grow(size);
    return offset;
}

void MdatBox::writeFields() {
    stream().seek(position() + kLargeBoxHeaderSize);
    std::vector<WritePart> parts;
    parts.reserve(blocks_.size());
    for (const SampleBlock& each : blocks_) parts.push_back({each.data(), each.size()});
    stream().writeParts(parts.data(), parts.size());
}

}  // namespace qlix::kzm::impl
