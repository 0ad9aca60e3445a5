#include "qlix_flv/ReadAhead.h"

#include <algorithm>
#include <cstring>

namespace qlix::flv {

ReadAhead::ReadAhead(Stream& stream, const Memory& memory)
    : stream_(stream), blocks_{Block(memory), Block(memory), Block(memory), Block(memory)} {}

void ReadAhead::peek(std::uint64_t offset, std::uint8_t* buffer, std::uint32_t count, Gap gap) {
    if (copyFromLatest(offset, buffer, count)) return;
    while (count > 0) {
        const std::uint32_t done =
            copyFromBlock(fetch(offset / kBlockSize, gap), offset, buffer, count);
        offset += done;
        buffer += done;
        count -= done;
    }
}

void ReadAhead::copy(std::uint64_t offset, std::uint8_t* buffer, std::uint32_t count) {
    if (copyFromLatest(offset, buffer, count)) return;
    while (count > 0) {
        std::uint32_t done = uncachedRun(offset, count);
        if (done >= kBlockSize) {
            stream_.readAt(offset, buffer, done);
        } else {
            done = copyFromBlock(fetch(offset / kBlockSize, Gap::skip), offset, buffer, count);
        }
        offset += done;
        buffer += done;
        count -= done;
    }
}

bool ReadAhead::copyFromLatest(std::uint64_t offset, std::uint8_t* buffer, std::uint32_t count) {
    if (latest_ == nullptr || count == 0) return false;
    const std::uint64_t within = offset - latest_->index * kBlockSize;  // wraps in front of it
    if (within >= kBlockSize || count > kBlockSize - within) return false;
    std::memcpy(buffer, latest_->bytes.data() + within, count);
    return true;
}

ReadAhead::Block* ReadAhead::find(std::uint64_t index) {
    for (Block& block : blocks_) {
        if (block.lastUse != 0 && block.index == index) return &block;
    }
    return nullptr;
}

ReadAhead::Block& ReadAhead::load(std::uint64_t index) {
    Block& block = *std::min_element(
        blocks_.begin(), blocks_.end(),
        [](const Block& left, const Block& right) { return left.lastUse < right.lastUse; });
    const std::uint64_t offset = index * kBlockSize;
    const auto count =
        static_cast<std::uint32_t>(std::min<std::uint64_t>(kBlockSize, stream_.size() - offset));
    block.lastUse = 0;
    latest_ = nullptr;
    block.bytes.resize(std::max<std::size_t>(block.bytes.size(), count));
    stream_.readAt(offset, block.bytes.data(), count);
    block.index = index;
    block.lastUse = ++uses_;
    latest_ = &block;
    return block;
}

ReadAhead::Block& ReadAhead::fetch(std::uint64_t index, Gap gap) {
    if (Block* held = find(index)) {
        held->lastUse = ++uses_;
        latest_ = held;
        return *held;
    }
    if (gap == Gap::readThrough) readThroughTo(index);
    return load(index);
}

void ReadAhead::readThroughTo(std::uint64_t index) {
    // Two blocks of gap leave room for the block in front of it and the one behind it.
    constexpr std::uint64_t kLongestGap = kBlockCount - 2;
    const std::uint64_t next = stream_.position() / kBlockSize;
    if (stream_.position() % kBlockSize != 0 || next >= index || index - next > kLongestGap) return;
    for (std::uint64_t i = next; i < index; ++i) {
        if (find(i) != nullptr) return;
    }
    for (std::uint64_t i = next; i < index; ++i) load(i);
}

std::uint32_t ReadAhead::uncachedRun(std::uint64_t offset, std::uint32_t count) {
    // The run ends with a block, so that the rest comes with what stands behind it.
    const std::uint64_t lastIndex = (offset + count) / kBlockSize;
    std::uint64_t index = offset / kBlockSize;
    while (index < lastIndex && find(index) == nullptr) ++index;
    const std::uint64_t end = index * kBlockSize;
    return end > offset ? static_cast<std::uint32_t>(end - offset) : 0;
}

std::uint32_t ReadAhead::copyFromBlock(Block& block, std::uint64_t offset, std::uint8_t* buffer,
                                       std::uint32_t count) {
    const auto within = static_cast<std::uint32_t>(offset % kBlockSize);
    const std::uint32_t done = std::min(count, kBlockSize - within);
    std::memcpy(buffer, block.bytes.data() + within, done);
    return done;
}

}  // namespace qlix::flv
