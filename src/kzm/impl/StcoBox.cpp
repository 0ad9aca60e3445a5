#include "kzm/impl/StcoBox.h"

namespace qlix::kzm::impl {
namespace {

constexpr std::uint64_t kRowSize = 4;

}  // namespace

StcoBox::StcoBox(const BoxContext& context, const BoxHeader& header)
    : TableBox(context, header), offsets_(HeapOf<std::uint64_t>(context.allocator)) {}

void StcoBox::readFields() {
    FieldReader in = fields();
    const std::uint32_t count = limited(in.u32(), ErrorCode::tableTooLarge);
    const std::vector<std::uint8_t> bytes = readRows(in, kRowSize, count);
    offsets_.clear();
    offsets_.reserve(bytes.size() / kRowSize);
    for (std::size_t at = 0; at < bytes.size(); at += kRowSize) {
        offsets_.push_back(torvo::kzs::loadU32(&bytes[at]));
    }
}

std::unique_ptr<ChunkOffsetIterator> StcoBox::offsetsFrom(std::uint32_t chunk) const {
    return std::make_unique<NormalChunkOffsetIterator>(offsets_, chunk);
}

}  // namespace qlix::kzm::impl
