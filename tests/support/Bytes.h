#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

namespace kz::test {

/// A byte string that grows by `+` and `+=`, for building inputs and expected outputs.
///
///   Bytes box = u32(16) + text("mfhd") + u32(0) + u32(7);
class Bytes : public std::vector<std::uint8_t> {
public:
    using std::vector<std::uint8_t>::vector;

    Bytes& operator+=(const Bytes& more);

    /// The first `count` bytes; all of them when there are fewer.
    Bytes cutTo(std::size_t count) const;
    /// `count` bytes from `offset`, which must lie inside.
    Bytes slice(std::size_t offset, std::size_t count) const;
    /// A copy in which `patch` stands at `offset`.
    Bytes patched(std::size_t offset, const Bytes& patch) const;
    /// Offset of the first place where `letters` stand. Throws std::logic_error without one.
    std::size_t find(std::string_view letters) const;

    std::string str() const { return std::string(begin(), end()); }
};

Bytes operator+(Bytes left, const Bytes& right);

/// Big-endian integers.
Bytes u8(std::uint64_t value);
Bytes u16(std::uint64_t value);
Bytes u24(std::uint64_t value);
Bytes u32(std::uint64_t value);
Bytes u64(std::uint64_t value);
Bytes f64(double value);

/// The characters as they are, no terminator.
Bytes text(std::string_view characters);
Bytes raw(std::initializer_list<int> values);
Bytes fill(std::size_t count, int value);
/// A run of bytes that differs with `seed`: value i is (seed * 31 + i * 7) mod 256.
Bytes pattern(std::size_t count, unsigned seed);

/// Hex digits, blanks and line ends: "00 1f ff".
Bytes hex(std::string_view digits);

/// Bytes from a table of rows "offset  hex  words of explanation".
///
/// The offset is decimal and is checked against what stands before the row. The hex may hold
/// several groups only if they are joined without blanks. Throws std::logic_error where an
/// offset is wrong.
Bytes hexTable(std::string_view rows);

/// A readable difference of two byte strings: empty when they are equal, else the first offset
/// at which they differ with the bytes around it.
std::string difference(const Bytes& actual, const Bytes& expected);

Bytes bytesOf(const std::string& characters);
Bytes bytesOf(const void* data, std::size_t size);

}  // namespace kz::test
