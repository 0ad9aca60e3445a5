#pragma once

#include <cstdint>
#include <memory>

#include <boost/smart_ptr/intrusive_ptr.hpp>

#include "kzs/base/RefCounted.h"

namespace torvo::kzspkgutil {

/// A reference-counted block of bytes.
class IMemoryArenaAlloc : public kzs::IRefCountedObject {
public:
    virtual std::uint8_t* data() = 0;
    virtual std::uint64_t size() const = 0;
};

/// Shares a block: copying adds a reference, destruction releases it.
using BlockPtr = boost::intrusive_ptr<IMemoryArenaAlloc>;

/// The block of RefCountedMemoryArena: an array of exactly the size asked for, uninitialised.
class Block final : public kzs::NoLockRefCountedObject<IMemoryArenaAlloc> {
public:
    /// Throws std::bad_alloc.
    explicit Block(std::uint64_t size);

    std::uint8_t* data() override { return data_.get(); }
    std::uint64_t size() const override { return size_; }

private:
    std::unique_ptr<std::uint8_t[]> data_;
    std::uint64_t size_;
};

/// Where the bytes of samples come from.
class IMemoryArena {
public:
    virtual ~IMemoryArena() = default;

    /// A new block of exactly `size` bytes. Throws std::bad_alloc.
    virtual BlockPtr allocate(std::uint64_t size) = 0;
    /// Reserved for giving all memory back at once; called once, at the end of a run.
    virtual void reset() = 0;
};

/// Gives every sample a block of its own; on purpose there is no pool, and reset does nothing.
/// Pinned by RefCountedMemoryArenaTest.GivesBlocksOfExactlyTheSizeAskedFor and
/// .LeavesBlocksAloneOnReset.
class RefCountedMemoryArena final : public IMemoryArena {
public:
    BlockPtr allocate(std::uint64_t size) override;
    void reset() override {}
};

}  // namespace torvo::kzspkgutil
