#include "kzm/impl/TableCursors.h"

#include <algorithm>

namespace qlix::kzm::impl {
namespace {

std::uint64_t ceilOf(std::uint64_t value, std::uint32_t divisor) {
    return value / divisor + (value % divisor != 0 ? 1 : 0);
}

// How many samples start before `time`. Start times never go down from row to row.
std::uint64_t countBefore(const BoxVector<SttsRow>& rows, std::uint64_t time) {
    const auto behind = std::partition_point(
        rows.begin(), rows.end(), [time](const SttsRow& row) { return row.startTime < time; });
    if (behind == rows.begin()) return 0;
    const SttsRow& row = *(behind - 1);
    std::uint64_t inRow = row.count;
    if (row.delta != 0) inRow = std::min(inRow, ceilOf(time - row.startTime, row.delta));
    return row.firstSample - 1 + inRow;
}

}  // namespace

SampleRange samplesBetween(const BoxVector<SttsRow>& rows, std::uint64_t start, std::uint64_t end) {
    return {countBefore(rows, start) + 1, countBefore(rows, end) + 1};
}

DecodeTimeCursor::DecodeTimeCursor(const BoxVector<SttsRow>& rows, const SampleRange& range)
    : rows_(rows), sample_(range.first), end_(range.end) {
    // The last row that begins at or before the sample; rows without samples share their first
    // number with the one behind them.
    const auto behind = std::partition_point(rows.begin(), rows.end(), [this](const SttsRow& row) {
        return row.firstSample <= sample_;
    });
    if (behind == rows.begin()) {
        end_ = sample_;
        return;
    }
    row_ = static_cast<std::size_t>(behind - rows.begin()) - 1;
    enterRow();
    time_ += (sample_ - rows_[row_].firstSample) * rows_[row_].delta;
}

void DecodeTimeCursor::enterRow() {
    time_ = rows_[row_].startTime;
    rowEnd_ = std::uint64_t{rows_[row_].firstSample} + rows_[row_].count;
}

void DecodeTimeCursor::next() {
    if (!isValid()) return;
    time_ += rows_[row_].delta;
    ++sample_;
    while (isValid() && sample_ >= rowEnd_) {
        if (++row_ >= rows_.size()) {
            end_ = sample_;
            return;
        }
        enterRow();
    }
}

CompositionCursor::CompositionCursor(const BoxVector<CttsRow>* rows, std::uint32_t sample)
    : rows_(rows) {
    if (rows_ == nullptr) return;
    const auto behind =
        std::partition_point(rows_->begin(), rows_->end(),
                             [sample](const CttsRow& row) { return row.firstSample <= sample; });
    if (behind == rows_->begin()) return;
    row_ = static_cast<std::size_t>(behind - rows_->begin()) - 1;
    const std::uint32_t done = sample - (*rows_)[row_].firstSample;
    if (done >= (*rows_)[row_].count) {
        rows_ = nullptr;
        return;
    }
    enterRow();
    leftInRow_ -= done;
}

// Answers whether the row has a sample.
bool CompositionCursor::enterRow() {
    const CttsRow& row = (*rows_)[row_];
    leftInRow_ = row.count;
    if (row.count > 0) offset_ = row.offset;
    return row.count > 0;
}

void CompositionCursor::next() {
    if (rows_ == nullptr || leftInRow_ == 0) return;
    if (--leftInRow_ > 0) return;
    while (++row_ < rows_->size()) {
        if (enterRow()) return;
    }
    // On purpose: the last offset holds on when the table is shorter than the track.
    // Pinned by CompositionCursorTest.HoldsTheLastOffsetBehindTheTable.
    rows_ = nullptr;
}

ChunkCursor::ChunkCursor(const BoxVector<StscRow>& rows, std::uint32_t sample) : rows_(rows) {
    const auto behind =
        std::partition_point(rows.begin(), rows.end(),
                             [sample](const StscRow& row) { return row.firstSample <= sample; });
    if (sample == 0 || behind == rows.begin()) {
        row_ = rows_.size();
        return;
    }
    row_ = static_cast<std::size_t>(behind - rows.begin()) - 1;
    const StscRow& row = rows_[row_];
    const std::uint32_t chunksBefore = (sample - row.firstSample) / row.samplesPerChunk;
    leftInChunk_ = row.samplesPerChunk;
    leftInRun_ = row.chunkCount - chunksBefore;
    sample_ = row.firstSample + chunksBefore * row.samplesPerChunk;
    chunk_ = row.firstChunk + chunksBefore;
}

void ChunkCursor::next() {
    if (!isValid()) return;
    ++sample_;
    if (--leftInChunk_ > 0) return;
    ++chunk_;
    if (--leftInRun_ == 0) {
        while (++row_ < rows_.size() && rows_[row_].chunkCount == 0) {
        }
        if (!isValid()) return;
        leftInRun_ = rows_[row_].chunkCount;
        chunk_ = rows_[row_].firstChunk;
    }
    leftInChunk_ = rows_[row_].samplesPerChunk;
}

void ChunkCursor::skipTo(std::uint32_t sample) {
    if (!isValid() || sample < sample_ || sample - sample_ >= leftInChunk_) return;
    leftInChunk_ -= sample - sample_;
    sample_ = sample;
}

std::uint32_t ChunkCursor::descriptionIndex() const {
    return isValid() ? rows_[row_].descriptionIndex : 0;
}

}  // namespace qlix::kzm::impl
