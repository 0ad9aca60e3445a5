#include "kzm/impl/SttsBox.h"

#include <algorithm>
#include <limits>

namespace qlix::kzm::impl {
namespace {

constexpr std::uint64_t kRowSize = 8;

FieldWriter rowOf(std::uint32_t count, std::uint32_t delta) {
    FieldWriter out;
    out.u32(count);
    out.u32(delta);
    return out;
}

std::uint64_t sumOf(std::uint64_t left, std::uint64_t right) {
    const std::uint64_t sum = left + right;
    return sum < left ? std::numeric_limits<std::uint64_t>::max() : sum;
}

/// A single sample needs two rows: an empty run and itself.
std::uint64_t rowCapacity(std::uint32_t samples) {
    return samples == 0 ? 0 : std::uint64_t{samples} + 1;
}

}  // namespace

SttsBox::SttsBox(const BoxContext& context, std::uint32_t capacity, std::uint32_t lastDelta)
    : TableBox(context, fourCc("stts"), kRowSize, rowCapacity(capacity)),
      rows_(HeapOf<SttsRow>(context.allocator)),
      lastDelta_(lastDelta) {}

SttsBox::SttsBox(const BoxContext& context, const BoxHeader& header)
    : TableBox(context, header), rows_(HeapOf<SttsRow>(context.allocator)) {}

void SttsBox::addSample(std::uint64_t time) {
    if (hasSample_) {
        const std::uint32_t delta = torvo::kzs::low32(time - lastTime_);
        if (runCount_ > 0 && delta != runDelta_) {
            appendRow(rowOf(runCount_, runDelta_));
            runCount_ = 0;
        }
        runDelta_ = delta;
        ++runCount_;
    }
    hasSample_ = true;
    lastTime_ = time;
}

void SttsBox::updateFields() {
    if (!hasSample_) {
        TableBox::updateFields();
        return;
    }
    // On purpose: the open run counts as a row even when it is empty, and the last sample, whose
    // end is not known, is a row of its own. Pinned by
    // SttsBoxTest.EndsWithTheOpenRunAndTheLastSample.
    FieldWriter rows = rowOf(runCount_, runDelta_);
    rows.u32(1);
    rows.u32(lastDelta_);
    putPending(rows, 2);
}

void SttsBox::readFields() {
    FieldReader in = fields();
    const std::uint32_t count = limited(in.u32(), ErrorCode::countTooLarge);
    const std::vector<std::uint8_t> bytes = readRows(in, kRowSize, count);
    rows_.clear();
    rows_.reserve(bytes.size() / kRowSize);
    SttsRow next;
    for (std::size_t at = 0; at < bytes.size(); at += kRowSize) {
        next.count = torvo::kzs::loadU32(&bytes[at]);
        next.delta = torvo::kzs::loadU32(&bytes[at + 4]);
        rows_.push_back(next);
        next.startTime = sumOf(next.startTime, std::uint64_t{next.count} * next.delta);
        next.firstSample =
            torvo::kzs::low32(std::min<std::uint64_t>(std::uint64_t{next.firstSample} + next.count,
                                                      std::numeric_limits<std::uint32_t>::max()));
    }
}

}  // namespace qlix::kzm::impl
