#include "kzm/impl/Co64Box.h"

namespace qlix::kzm::impl {
namespace {

constexpr std::uint64_t kRowSize = 8;

}  // namespace

Co64Box::Co64Box(const BoxContext& context, std::uint32_t capacity)
    : TableBox(context, fourCc("co64"), kRowSize, capacity),
      offsets_(HeapOf<std::uint64_t>(context.allocator)) {}

Co64Box::Co64Box(const BoxContext& context, const BoxHeader& header)
    : TableBox(context, header), offsets_(HeapOf<std::uint64_t>(context.allocator)) {}

void Co64Box::addChunk(std::uint64_t offset) {
    FieldWriter row;
    row.u64(offset);
    appendRow(row);
}

void Co64Box::readFields() {
    FieldReader in = fields();
    const std::uint32_t count = limited(in.u32(), ErrorCode::tableTooLarge);
    const std::vector<std::uint8_t> bytes = readRows(in, kRowSize, count);
    offsets_.clear();
    offsets_.reserve(bytes.size() / kRowSize);
    for (std::size_t at = 0; at < bytes.size(); at += kRowSize) {
        offsets_.push_back(torvo::kzs::loadU64(&bytes[at]));
    }
}

std::unique_ptr<ChunkOffsetIterator> Co64Box::offsetsFrom(std::uint32_t chunk) const {
    return std::make_unique<NormalChunkOffsetIterator>(offsets_, chunk);
}

}  // namespace qlix::kzm::impl
