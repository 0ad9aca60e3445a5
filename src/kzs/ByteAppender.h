#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "kzs/base/ByteOrder.h"

namespace torvo::kzs {

/// Appends big-endian fields to a byte vector, which outlives it.
class ByteAppender {
public:
    explicit ByteAppender(std::vector<std::uint8_t>& bytes) : bytes_(bytes) {}

    void u8(std::uint8_t value) { bytes_.push_back(value); }
    void u16(std::uint16_t value) { storeU16(grow(2), value); }
    void u32(std::uint32_t value) { storeU32(grow(4), value); }
    void u64(std::uint64_t value) { storeU64(grow(8), value); }
    /// The characters and a zero byte.
    void text(const std::string& value) {
        bytes_.insert(bytes_.end(), value.begin(), value.end());
        bytes_.push_back(0);
    }
    /// A box of `type` begins here; returns what endBox wants.
    std::size_t beginBox(std::uint32_t type) {
        const std::size_t start = bytes_.size();
        u32(0);
        u32(type);
        return start;
    }
    /// Puts the box's size, all that came since, into its header.
    void endBox(std::size_t start) {
        storeU32(bytes_.data() + start, low32(bytes_.size() - start));
    }

private:
    std::uint8_t* grow(std::size_t count) {
        bytes_.resize(bytes_.size() + count);
        return bytes_.data() + (bytes_.size() - count);
    }

    std::vector<std::uint8_t>& bytes_;
};

}  // namespace torvo::kzs
