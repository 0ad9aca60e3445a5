#include "kzm/impl/StscBox.h"

#include <algorithm>
#include <limits>

namespace qlix::kzm::impl {
namespace {

constexpr std::uint64_t kRowSize = 12;
constexpr std::uint32_t kLargest = std::numeric_limits<std::uint32_t>::max();

/// First sample behind a run of chunks.
std::uint32_t sampleBehind(const StscRow& row) {
    const std::uint64_t samples = std::uint64_t{row.chunkCount} * row.samplesPerChunk;
    const std::uint64_t room = kLargest - row.firstSample;
    return row.firstSample + torvo::kzs::low32(std::min(samples, room));
}

}  // namespace

StscBox::StscBox(const BoxContext& context, std::uint32_t capacity)
    : TableBox(context, fourCc("stsc"), kRowSize, capacity),
      rows_(HeapOf<StscRow>(context.allocator)) {}

StscBox::StscBox(const BoxContext& context, const BoxHeader& header)
    : TableBox(context, header), rows_(HeapOf<StscRow>(context.allocator)) {}

void StscBox::addChunk(std::uint32_t chunk, std::uint32_t samples, std::uint32_t descriptionIndex) {
    FieldWriter row;
    row.u32(chunk);
    row.u32(samples);
    row.u32(descriptionIndex);
    appendRow(row);
}

void StscBox::readFields() {
    FieldReader in = fields();
    const std::uint32_t count = in.u32();
    const std::vector<std::uint8_t> bytes = readRows(in, kRowSize, count);
    rows_.clear();
    rows_.reserve(bytes.size() / kRowSize);
    for (std::size_t at = 0; at < bytes.size(); at += kRowSize) {
        StscRow row;
        row.firstChunk = torvo::kzs::loadU32(&bytes[at]);
        row.samplesPerChunk = torvo::kzs::loadU32(&bytes[at + 4]);
        row.descriptionIndex = torvo::kzs::loadU32(&bytes[at + 8]);
        rows_.push_back(row);
    }
    link();
}

void StscBox::link() {
    std::uint32_t firstSample = 1;
    for (std::size_t i = 0; i < rows_.size(); ++i) {
        StscRow& row = rows_[i];
        const bool isFirst = i == 0;
        const bool isLast = i + 1 == rows_.size();
        if (row.samplesPerChunk == 0 || (isFirst && row.firstChunk != 1) ||
            (!isLast && rows_[i + 1].firstChunk < row.firstChunk)) {
            raise(ErrorCode::chunksOutOfOrder);
        }
        row.chunkCount = isLast ? kLargest : rows_[i + 1].firstChunk - row.firstChunk;
        row.firstSample = firstSample;
        firstSample = sampleBehind(row);
    }
}

}  // namespace qlix::kzm::impl
