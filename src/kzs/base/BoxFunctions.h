#pragma once

#include <array>
#include <cstdint>
#include <iosfwd>

namespace torvo::kzs {

/// Functions with which boxes are read from and written to standard streams. They fail as the
/// stream's exception setting says. Integers are big-endian.

/// A box header: 4 bytes size, 4 bytes type; a size of 1 has 8 bytes of size behind the type; a
/// type of `uuid` has 16 more bytes behind that.
struct StreamBoxHeader {
    std::uint64_t size = 0;
    std::uint32_t type = 0;
    std::array<std::uint8_t, 16> extendedType{};
};

/// A size of 0 in the file leaves the header's size as it was.
void readBoxHeader(std::istream& stream, StreamBoxHeader& header);
/// A size above 0xFFFFFFFF is written in its 64-bit form.
void writeBoxHeader(std::ostream& stream, const StreamBoxHeader& header);
/// Writes the size of the box that began at `start` and ends at the current position into its
/// header, and goes back to the end.
void closeBox(std::ostream& stream, std::uint64_t start);

std::uint8_t readByte(std::istream& stream);
std::uint16_t readU16(std::istream& stream);
std::uint32_t readU32(std::istream& stream);
std::uint64_t readU64(std::istream& stream);
/// 8 bytes if `wide`, else 4.
std::uint64_t readSized(std::istream& stream, bool wide);

void writeByte(std::ostream& stream, std::uint8_t value);
void writeU16(std::ostream& stream, std::uint16_t value);
void writeU32(std::ostream& stream, std::uint32_t value);
void writeU64(std::ostream& stream, std::uint64_t value);
/// 8 bytes if `wide`, else the low 4.
void writeSized(std::ostream& stream, std::uint64_t value, bool wide);

/// Scans from the current position for the four bytes of `type`, whatever boxes they stand in.
///
/// True for a hit, with the position at the size field, the four bytes in front of it; where the
/// stream has no room for that in front of a match, the scan goes on. False at the end of the
/// stream. While it scans, the stream throws for a hard error (badbit) only.
bool findBox(std::istream& stream, std::uint32_t type);

}  // namespace torvo::kzs
