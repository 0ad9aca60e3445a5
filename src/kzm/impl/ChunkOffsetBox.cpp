#include "kzm/impl/ChunkOffsetBox.h"

#include <vector>

#include "kzs/base/ByteOrder.h"

namespace qlix::kzm::impl {

ChunkOffsetBox::ChunkOffsetBox(const BoxContext& context, std::uint32_t type, std::uint64_t rowSize,
                               std::uint32_t capacity)
    : TableBox(context, type, rowSize, capacity),
      rowSize_(rowSize),
      offsets_(HeapOf<std::uint64_t>(context.allocator)) {}

ChunkOffsetBox::ChunkOffsetBox(const BoxContext& context, const BoxHeader& header,
                               std::uint64_t rowSize)
    : TableBox(context, header),
      rowSize_(rowSize),
      offsets_(HeapOf<std::uint64_t>(context.allocator)) {}

void ChunkOffsetBox::readFields() {
    FieldReader in = fields();
    const std::uint32_t count = limited(in.u32(), ErrorCode::tableTooLarge);
    const std::vector<std::uint8_t> bytes = readRows(in, rowSize_, count);
    offsets_.clear();
    offsets_.reserve(bytes.size() / rowSize_);
    for (std::size_t at = 0; at < bytes.size(); at += rowSize_) {
        offsets_.push_back(rowSize_ == 8 ? torvo::kzs::loadU64(&bytes[at])
                                         : torvo::kzs::loadU32(&bytes[at]));
    }
}

std::unique_ptr<ChunkOffsetIterator> ChunkOffsetBox::offsetsFrom(std::uint32_t chunk) const {
    return std::make_unique<NormalChunkOffsetIterator>(offsets_, chunk);
}

}  // namespace qlix::kzm::impl
