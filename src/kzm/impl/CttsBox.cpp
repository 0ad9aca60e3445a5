#include "kzm/impl/CttsBox.h"

#include <limits>

namespace qlix::kzm::impl {
namespace {

constexpr std::uint64_t kRowSize = 8;

FieldWriter rowOf(std::uint32_t count, std::uint32_t offset) {
    FieldWriter out;
    out.u32(count);
    out.u32(offset);
    return out;
}

}  // namespace

CttsBox::CttsBox(const BoxContext& context, std::uint32_t capacity)
    : TableBox(context, fourCc("ctts"), kRowSize, capacity),
      rows_(HeapOf<CttsRow>(context.allocator)) {}

CttsBox::CttsBox(const BoxContext& context, const BoxHeader& header)
    : TableBox(context, header), rows_(HeapOf<CttsRow>(context.allocator)) {}

void CttsBox::addSample(std::uint32_t offset) {
    if (runCount_ > 0 && offset != runOffset_) {
        appendRow(rowOf(runCount_, runOffset_));
        runCount_ = 0;
    }
    runOffset_ = offset;
    ++runCount_;
}

void CttsBox::updateFields() {
    if (runCount_ == 0) {
        TableBox::updateFields();
    } else {
        putPending(rowOf(runCount_, runOffset_), 1);
    }
}

void CttsBox::readFields() {
    FieldReader in = fields();
    const std::uint32_t count = limited(in.u32(), ErrorCode::countTooLarge);
    const std::vector<std::uint8_t> bytes = readRows(in, kRowSize, count);
    rows_.clear();
    rows_.reserve(bytes.size() / kRowSize);
    std::uint64_t firstSample = 1;
    for (std::size_t at = 0; at < bytes.size(); at += kRowSize) {
        if (firstSample > std::numeric_limits<std::uint32_t>::max()) {
            raise(ErrorCode::sampleNumberTooLarge);
        }
        CttsRow row;
        row.count = torvo::kzs::loadU32(&bytes[at]);
        row.offset = torvo::kzs::loadU32(&bytes[at + 4]);
        row.firstSample = torvo::kzs::low32(firstSample);
        rows_.push_back(row);
        firstSample += row.count;
    }
}

}  // namespace qlix::kzm::impl
