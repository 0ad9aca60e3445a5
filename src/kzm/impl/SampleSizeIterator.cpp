#include "kzm/impl/SampleSizeIterator.h"

#include <algorithm>

namespace qlix::kzm::impl {
namespace {

std::uint32_t positionOf(std::uint32_t sample, std::uint32_t count) {
    return sample == 0 || sample > count ? count : sample - 1;
}

}  // namespace

FixedSampleSizeIterator::FixedSampleSizeIterator(std::uint32_t size, std::uint32_t count,
                                                 std::uint32_t sample)
    : size_(size), count_(count), position_(positionOf(sample, count)) {}

void FixedSampleSizeIterator::next() {
    if (isValid()) ++position_;
}

std::uint64_t FixedSampleSizeIterator::skip(std::uint32_t count) {
    const std::uint32_t skipped = std::min(count, count_ - position_);
    position_ += skipped;
    return std::uint64_t{skipped} * size_;
}

NormalVariableSampleSizeIterator::NormalVariableSampleSizeIterator(
    const BoxVector<std::uint32_t>& sizes, std::uint32_t sample)
    : sizes_(sizes), position_(positionOf(sample, static_cast<std::uint32_t>(sizes.size()))) {}

void NormalVariableSampleSizeIterator::next() {
    if (isValid()) ++position_;
}

std::uint64_t NormalVariableSampleSizeIterator::skip(std::uint32_t count) {
    const std::size_t end = position_ + std::min<std::size_t>(count, sizes_.size() - position_);
    std::uint64_t bytes = 0;
    for (; position_ < end; ++position_) bytes += sizes_[position_];
    return bytes;
}

}  // namespace qlix::kzm::impl
