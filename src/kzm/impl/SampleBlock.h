#pragma once

#include <cstdint>
#include <utility>

#include "kzm/WriterRecords.h"

namespace qlix::kzm::impl {

/// Bytes of a caller that are given back when the object goes.
class SampleBlock {
public:
    SampleBlock() = default;
    /// Takes `data` over: its release callback runs once, from the destructor.
    SampleBlock(const SampleData& data, std::uint64_t size) : data_(data), size_(size) {}
    SampleBlock(SampleBlock&& other) noexcept
        : data_(std::exchange(other.data_, SampleData())), size_(std::exchange(other.size_, 0)) {}
    SampleBlock& operator=(SampleBlock&& other) noexcept {
        std::swap(data_, other.data_);
        std::swap(size_, other.size_);
        return *this;
    }
    ~SampleBlock() {
        if (data_.release != nullptr) data_.release(data_.context);
    }

    const std::uint8_t* data() const { return data_.data; }
    std::uint64_t size() const { return size_; }

private:
    SampleData data_;
    std::uint64_t size_ = 0;
};

}  // namespace qlix::kzm::impl
