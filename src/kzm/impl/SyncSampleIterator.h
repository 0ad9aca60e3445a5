#pragma once

#include <algorithm>
#include <cstdint>
#include <memory>

#include "kzm/impl/BoxVector.h"

namespace qlix::kzm::impl {

/// Walks the numbers of sync samples beside the samples.
class SyncSampleIterator {
public:
    /// Starts at the first number that is at least `sample`. `numbers` outlives the iterator.
    SyncSampleIterator(const BoxVector<std::uint32_t>& numbers, std::uint32_t sample)
        : next_(std::lower_bound(numbers.data(), numbers.data() + numbers.size(), sample)),
          end_(numbers.data() + numbers.size()) {}

    /// Whether `sample` is a sync sample. Moves on: numbers must be asked for in order.
    bool takes(std::uint32_t sample) {
        while (next_ != end_ && *next_ < sample) ++next_;
        if (next_ == end_ || *next_ != sample) return false;
        ++next_;
        return true;
    }

private:
    const std::uint32_t* next_;
    const std::uint32_t* end_;
};

/// A box that knows the sync samples.
class ISyncSampleBox {
public:
    virtual ~ISyncSampleBox() = default;

    /// Starts at a sample number, from 1. The box outlives the iterator.
    virtual std::unique_ptr<SyncSampleIterator> syncSamplesFrom(std::uint32_t sample) const = 0;
};

}  // namespace qlix::kzm::impl
