#include "kzm/impl/TfraBox.h"

#include "kzm/ErrorCode.h"

namespace qlix::kzm::impl {
namespace {

constexpr std::uint32_t kFourByteNumbers = 0x3F;

/// Bytes of a number whose length is given as bytes less one.
std::uint64_t lengthOf(std::uint32_t encoded) {
    if (encoded >= 4) raise(ErrorCode::badArgument);
    return encoded + 1;
}

std::uint32_t readNumber(FieldReader& in, std::uint64_t length) {
    std::uint32_t value = 0;
    for (std::uint64_t i = 0; i < length; ++i) value = (value << 8) | in.u8();
    return value;
}

}  // namespace

TfraBox::TfraBox(const BoxContext& context, std::uint32_t trackId, std::uint8_t version)
    : FullBox(context, fourCc("tfra"), version, 0),
      trackId_(static_cast<std::uint8_t>(trackId)),
      entries_(HeapOf<Entry>(context.allocator)) {
    setFixedSize(kFullBoxHeaderSize + 12);
}

TfraBox::TfraBox(const BoxContext& context, const BoxHeader& header)
    : FullBox(context, header), entries_(HeapOf<Entry>(context.allocator)) {}

void TfraBox::readFields() {
    FieldReader in = fields();
    trackId_ = static_cast<std::uint8_t>(in.u32());
    const std::uint32_t lengths = in.u32();
    const std::uint64_t trafLength = lengthOf(lengths >> 4);
    const std::uint64_t trunLength = lengthOf((lengths >> 2) & 3);
    const std::uint64_t sampleLength = lengthOf(lengths & 3);
    const std::uint32_t count = in.u32();
    if (count > kSanityLimit) raise(ErrorCode::tableTooLarge);
    const bool wide = version() != 0;
    in.need(count * ((wide ? 16 : 8) + trafLength + trunLength + sampleLength));
    entries_.reserve(count);
    for (std::uint32_t i = 0; i < count; ++i) {
        Entry entry;
        entry.time = in.word(wide);
        entry.moofOffset = in.word(wide);
        entry.trafNumber = readNumber(in, trafLength);
        entry.trunNumber = readNumber(in, trunLength);
        entry.sampleNumber = readNumber(in, sampleLength);
        entries_.push_back(entry);
    }
}

void TfraBox::writeFields() {
    FieldWriter out;
    out.reserve(static_cast<std::size_t>(fieldsSize()));
    const bool wide = version() != 0;
    out.u32(trackId_);
    out.u32(kFourByteNumbers);
    out.u32(static_cast<std::uint32_t>(entries_.size()));
    for (const Entry& each : entries_) {
        out.word(each.time, wide);
        out.word(each.moofOffset, wide);
        out.u32(each.trafNumber);
        out.u32(each.trunNumber);
        out.u32(each.sampleNumber);
    }
    put(out);
}

void TfraBox::addEntry(const Entry& entry) {
    entries_.push_back(entry);
    grow(writtenEntrySize());
}

}  // namespace qlix::kzm::impl
