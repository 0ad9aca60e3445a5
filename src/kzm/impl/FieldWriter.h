#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace qlix::kzm::impl {

/// Collects the fields of one box as bytes, in file order.
class FieldWriter {
public:
    void u8(std::uint8_t value) { bytes_.push_back(value); }
    void u16(std::uint16_t value);
    /// The low 24 bits.
    void u24(std::uint32_t value);
    void u32(std::uint32_t value);
    void u64(std::uint64_t value);
    /// A word of 64 bits if `wide`, else the low 32: the fields that version 1 widened.
    void word(std::uint64_t value, bool wide);
    void zeros(std::size_t count);
    void bytes(const std::uint8_t* first, std::size_t count);
    void text(std::string_view characters);
    /// 16.16 fixed point, truncated; values outside the range are clamped.
    void fixed16(double value);
    /// 8.8 fixed point, truncated; values outside the range are clamped.
    void fixed8(double value);

    void reserve(std::size_t count) { bytes_.reserve(count); }
    const std::uint8_t* data() const { return bytes_.data(); }
    std::size_t size() const { return bytes_.size(); }

private:
    std::uint8_t* grow(std::size_t count);

    std::vector<std::uint8_t> bytes_;
};

/// The number of a 16.16 or 8.8 fixed point field.
double fromFixed16(std::uint32_t value);
double fromFixed8(std::uint16_t value);

}  // namespace qlix::kzm::impl
