#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "kzm/impl/BoxVector.h"

namespace qlix::kzm::impl {

/// Walks the positions of chunks in the file.
class ChunkOffsetIterator {
public:
    virtual ~ChunkOffsetIterator() = default;

    virtual bool isValid() const = 0;
    virtual void next() = 0;
    /// 0 when not valid.
    virtual std::uint64_t offset() const = 0;
};

class NormalChunkOffsetIterator final : public ChunkOffsetIterator {
public:
    /// Starts at a chunk number, from 1; at the end if that is 0. `offsets` outlives the iterator.
    NormalChunkOffsetIterator(const BoxVector<std::uint64_t>& offsets, std::uint32_t chunk)
        : offsets_(offsets), position_(chunk == 0 ? offsets.size() : chunk - std::size_t{1}) {}

    bool isValid() const override { return position_ < offsets_.size(); }
    void next() override {
        if (isValid()) ++position_;
    }
    std::uint64_t offset() const override { return isValid() ? offsets_[position_] : 0; }

private:
    const BoxVector<std::uint64_t>& offsets_;
    std::size_t position_;
};

/// There are no chunks.
class NullChunkOffsetIterator final : public ChunkOffsetIterator {
public:
    bool isValid() const override { return false; }
    void next() override {}
    std::uint64_t offset() const override { return 0; }
};

/// A box that knows the positions of chunks.
class IChunkOffsetBox {
public:
    virtual ~IChunkOffsetBox() = default;

    /// Starts at a chunk number, from 1. The box outlives the iterator.
    virtual std::unique_ptr<ChunkOffsetIterator> offsetsFrom(std::uint32_t chunk) const = 0;
};

}  // namespace qlix::kzm::impl
