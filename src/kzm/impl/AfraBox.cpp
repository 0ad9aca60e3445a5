#include "kzm/impl/AfraBox.h"

namespace qlix::kzm::impl {
namespace {

constexpr std::uint64_t kEntryCountAt = kFullBoxHeaderSize + 5;
constexpr std::uint64_t kFixedSize = kEntryCountAt + 4;
constexpr std::uint8_t kLongIds = 0x80;
constexpr std::uint8_t kLongOffsets = 0x40;

}  // namespace

AfraBox::AfraBox(const BoxContext& context, std::uint32_t timescale)
    : FullBox(context, fourCc("afra"), 0, 0),
      timescale_(timescale),
      entries_(HeapOf<Entry>(context.allocator)) {
    setFixedSize(kFixedSize);
}

AfraBox::AfraBox(const BoxContext& context, const BoxHeader& header)
    : FullBox(context, header), entries_(HeapOf<Entry>(context.allocator)) {}

void AfraBox::writeFields() {
    FieldWriter out;
    out.reserve(static_cast<std::size_t>(fieldsSize()));
    // On purpose: an index inside a segment has local entries only; the file beside it differs.
    // Pinned by AfraBoxTest.HasLongIdsAndOffsetsAndNoGlobalEntries.
    out.u8(kLongIds | kLongOffsets);
    out.u32(timescale_);
    putEntries(out);
    put(out);
}

void AfraBox::updateFields() {
    FieldWriter out;
    putEntries(out);
    putAt(kEntryCountAt, out);
}

void AfraBox::putEntries(FieldWriter& out) const {
    out.u32(static_cast<std::uint32_t>(entries_.size()));
    for (const Entry& each : entries_) {
        out.u64(each.time);
        out.u64(each.offset);
    }
}

void AfraBox::addEntry(std::uint64_t time, std::uint64_t offset) {
    entries_.push_back(Entry{time, offset});
    grow(kEntrySize);
}

void AfraBox::moveOffsets(std::uint64_t distance) {
    for (Entry& each : entries_) each.offset += distance;
}

}  // namespace qlix::kzm::impl
