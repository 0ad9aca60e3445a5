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

/// Scans forward from the current position for the four bytes of `type`, byte by byte and with no
/// regard to structure. On a hit the position is 8 bytes before the byte behind it, the start of
/// the box's size field; a hit without four bytes in front of it in the stream is none. At the end
/// of the stream it answers false. The stream throws only on a hard error meanwhile.
bool findBox(std::istream& stream, std::uint32_t type);

/// Puts a stream's exception setting back when it goes, and clears what would make that throw.
class StreamExceptionGuard {
public:
    StreamExceptionGuard(std::ios& stream, unsigned exceptions);
    ~StreamExceptionGuard();
    StreamExceptionGuard(const StreamExceptionGuard&) = delete;
    StreamExceptionGuard& operator=(const StreamExceptionGuard&) = delete;

private:
    std::ios& stream_;  // outlives the guard
    unsigned former_;
};

}  // namespace torvo::kzs
