#pragma once

#include <cstdint>
#include <vector>

namespace qlix::kzm::impl {

class QlixKZMStream;

/// Reads the fields of one box in order and can't leave the box.
///
/// Every operation throws boxTooShort when the box has fewer bytes left than it needs.
class FieldReader {
public:
    /// Reads from the stream's position up to `end`, a position in the stream.
    FieldReader(QlixKZMStream& stream, std::uint64_t end) : stream_(stream), end_(end) {}

    /// Bytes between the position and the end of the box.
    std::uint64_t left() const;
    void need(std::uint64_t count) const;

    std::uint8_t u8();
    std::uint16_t u16();
    std::uint32_t u24();
    std::uint32_t u32();
    std::uint64_t u64();
    /// A word of 64 bits if `wide`, else of 32: the fields that version 1 widened.
    std::uint64_t word(bool wide) { return wide ? u64() : u32(); }
    void skip(std::uint64_t count);
    /// `count` bytes by one read; fewer if the stream ends first.
    std::vector<std::uint8_t> bytes(std::uint64_t count);

private:
    QlixKZMStream& stream_;
    std::uint64_t end_;
};

}  // namespace qlix::kzm::impl
