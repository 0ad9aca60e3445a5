#include "kzm/impl/Co64Box.h"

namespace qlix::kzm::impl {
namespace {

constexpr std::uint64_t kRowSize = 8;

}  // namespace

Co64Box::Co64Box(const BoxContext& context, std::uint32_t capacity)
    : ChunkOffsetBox(context, fourCc("co64"), kRowSize, capacity) {}

Co64Box::Co64Box(const BoxContext& context, const BoxHeader& header)
    : ChunkOffsetBox(context, header, kRowSize) {}

void Co64Box::addChunk(std::uint64_t offset) {
    FieldWriter row;
    row.u64(offset);
    appendRow(row);
}

}  // namespace qlix::kzm::impl
