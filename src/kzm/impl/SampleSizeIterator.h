#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "kzm/impl/BoxVector.h"

namespace qlix::kzm::impl {

/// Walks the sizes of samples, in bytes.
class SampleSizeIterator {
public:
    virtual ~SampleSizeIterator() = default;

    /// 0 when not valid.
    virtual std::uint32_t size() const = 0;
    virtual bool isValid() const = 0;
    virtual void next() = 0;
    /// Moves on by `count` samples and returns their bytes; stops at the end.
    virtual std::uint64_t skip(std::uint32_t count) = 0;
};

/// All samples have one size.
class FixedSampleSizeIterator final : public SampleSizeIterator {
public:
    /// Starts at a sample number, from 1; at the end if that is 0 or above the count.
    FixedSampleSizeIterator(std::uint32_t size, std::uint32_t count, std::uint32_t sample);

    std::uint32_t size() const override { return isValid() ? size_ : 0; }
    bool isValid() const override { return position_ < count_; }
    void next() override;
    std::uint64_t skip(std::uint32_t count) override;

private:
    std::uint32_t size_;
    std::uint32_t count_;
    std::uint32_t position_;
};

/// Each sample has a size of its own.
class NormalVariableSampleSizeIterator final : public SampleSizeIterator {
public:
    /// Starts as FixedSampleSizeIterator does. `sizes` outlives the iterator.
    NormalVariableSampleSizeIterator(const BoxVector<std::uint32_t>& sizes, std::uint32_t sample);

    std::uint32_t size() const override { return isValid() ? sizes_[position_] : 0; }
    bool isValid() const override { return position_ < sizes_.size(); }
    void next() override;
    std::uint64_t skip(std::uint32_t count) override;

private:
    const BoxVector<std::uint32_t>& sizes_;
    std::size_t position_;
};

/// There are no samples.
class NullSampleSizeIterator final : public SampleSizeIterator {
public:
    std::uint32_t size() const override { return 0; }
    bool isValid() const override { return false; }
    void next() override {}
    std::uint64_t skip(std::uint32_t /*count*/) override { return 0; }
};

/// A box that knows the sizes of samples.
class ISampleSizeBox {
public:
    virtual ~ISampleSizeBox() = default;

    /// Starts at a sample number, from 1. The box outlives the iterator.
    virtual std::unique_ptr<SampleSizeIterator> sizesFrom(std::uint32_t sample) const = 0;
};

}  // namespace qlix::kzm::impl
