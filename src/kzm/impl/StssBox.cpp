#include "kzm/impl/StssBox.h"

namespace qlix::kzm::impl {
namespace {

constexpr std::uint64_t kRowSize = 4;

}  // namespace

StssBox::StssBox(const BoxContext& context, std::uint32_t capacity)
    : TableBox(context, fourCc("stss"), kRowSize, capacity),
      sampleNumbers_(HeapOf<std::uint32_t>(context.allocator)) {}

StssBox::StssBox(const BoxContext& context, const BoxHeader& header)
    : TableBox(context, header), sampleNumbers_(HeapOf<std::uint32_t>(context.allocator)) {}

void StssBox::addSample(std::uint32_t number) {
    FieldWriter row;
    row.u32(number);
    appendRow(row);
}

void StssBox::readFields() {
    FieldReader in = fields();
    const std::uint32_t count = limited(in.u32(), ErrorCode::tableTooLarge);
    readWords(in, count, sampleNumbers_);
}

std::unique_ptr<SyncSampleIterator> StssBox::syncSamplesFrom(std::uint32_t sample) const {
    return std::make_unique<SyncSampleIterator>(sampleNumbers_, sample);
}

}  // namespace qlix::kzm::impl
