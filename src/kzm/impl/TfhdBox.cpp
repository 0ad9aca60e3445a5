#include "kzm/impl/TfhdBox.h"

namespace qlix::kzm::impl {
namespace {

constexpr std::uint64_t kBaseDataOffsetAt = kFullBoxHeaderSize + 4;

std::uint64_t sizeWith(std::uint32_t flags) {
    std::uint64_t size = kFullBoxHeaderSize + 4;
    if (flags & TfhdBox::kBaseDataOffsetPresent) size += 8;
    if (flags & TfhdBox::kDescriptionIndexPresent) size += 4;
    if (flags & TfhdBox::kDefaultDurationPresent) size += 4;
    if (flags & TfhdBox::kDefaultSizePresent) size += 4;
    if (flags & TfhdBox::kDefaultFlagsPresent) size += 4;
    return size;
}

void fillIfAbsent(std::uint32_t& value, std::uint32_t substitute) {
    if (value == TfhdBox::kAbsent) value = substitute;
}

}  // namespace

TfhdBox::TfhdBox(const BoxContext& context, std::uint32_t trackId, std::uint64_t baseDataOffset,
                 std::uint32_t descriptionIndex, std::uint32_t flags)
    : FullBox(context, fourCc("tfhd"), 0, flags),
      trackId_(trackId),
      baseDataOffset_(baseDataOffset),
      descriptionIndex_(descriptionIndex) {
    setFixedSize(sizeWith(flags));
}

TfhdBox::TfhdBox(const BoxContext& context, const BoxHeader& header) : FullBox(context, header) {}

void TfhdBox::readFields() {
    FieldReader in = fields();
    trackId_ = in.u32();
    if (has(kBaseDataOffsetPresent)) baseDataOffset_ = in.u64();
    if (has(kDescriptionIndexPresent)) descriptionIndex_ = in.u32();
    if (has(kDefaultDurationPresent)) defaultDuration_ = in.u32();
    if (has(kDefaultSizePresent)) defaultSize_ = in.u32();
    if (has(kDefaultFlagsPresent)) defaultFlags_ = in.u32();
}

void TfhdBox::writeFields() {
    FieldWriter out;
    out.u32(trackId_);
    if (has(kBaseDataOffsetPresent)) out.u64(baseDataOffset_);
    if (has(kDescriptionIndexPresent)) out.u32(descriptionIndex_);
    if (has(kDefaultDurationPresent)) out.u32(1);
    if (has(kDefaultSizePresent)) out.u32(1);
    if (has(kDefaultFlagsPresent)) out.u32(1);
    put(out);
}

void TfhdBox::updateFields() {
    if (!has(kBaseDataOffsetPresent)) return;
    FieldWriter out;
    out.u64(baseDataOffset_);
    putAt(kBaseDataOffsetAt, out);
}

void TfhdBox::fillIn(std::uint32_t descriptionIndex, std::uint32_t duration, std::uint32_t size,
                     std::uint32_t sampleFlags) {
    fillIfAbsent(descriptionIndex_, descriptionIndex);
    fillIfAbsent(defaultDuration_, duration);
    fillIfAbsent(defaultSize_, size);
    fillIfAbsent(defaultFlags_, sampleFlags);
}

}  // namespace qlix::kzm::impl
