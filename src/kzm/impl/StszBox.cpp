#include "kzm/impl/StszBox.h"

namespace qlix::kzm::impl {
namespace {

constexpr std::uint64_t kRowSize = 4;
constexpr std::uint64_t kCountOffset = kFullBoxHeaderSize + 4;

}  // namespace

StszBox::StszBox(const BoxContext& context, std::uint32_t capacity)
    : TableBox(context, fourCc("stsz"), kRowSize, capacity, kCountOffset),
      sizes_(HeapOf<std::uint32_t>(context.allocator)) {}

StszBox::StszBox(const BoxContext& context, const BoxHeader& header)
    : TableBox(context, header), sizes_(HeapOf<std::uint32_t>(context.allocator)) {}

void StszBox::addSample(std::uint32_t size) {
    FieldWriter row;
    row.u32(size);
    appendRow(row);
}

void StszBox::readFields() {
    FieldReader in = fields();
    fixedSize_ = in.u32();
    sampleCount_ = limited(in.u32(), ErrorCode::tableTooLarge);
    sizes_.clear();
    if (fixedSize_ == 0) readWords(in, sampleCount_, sizes_);
}

std::unique_ptr<SampleSizeIterator> StszBox::sizesFrom(std::uint32_t sample) const {
    if (fixedSize_ != 0) {
        return std::make_unique<FixedSampleSizeIterator>(fixedSize_, sampleCount_, sample);
    }
    if (sizes_.empty()) return std::make_unique<NullSampleSizeIterator>();
    return std::make_unique<NormalVariableSampleSizeIterator>(sizes_, sample);
}

}  // namespace qlix::kzm::impl
