#pragma once

#include <cstddef>
#include <cstdint>
#include <istream>
#include <ostream>
#include <string>

namespace kvl::amfmessage {

/// Bytes of an item that say what follows.
enum class Marker : std::uint8_t {
    number = 0x00,
    string = 0x02,
    object = 0x03,
    ecmaArray = 0x08,
    objectEnd = 0x09,
    strictArray = 0x0A,
    longString = 0x0C,
};

/// First length that a 16-bit length field can't hold.
constexpr std::size_t kShortStringLimit = 65536;

std::uint8_t readByte(std::istream& stream);
std::uint16_t readU16(std::istream& stream);
std::uint32_t readU32(std::istream& stream);
double readDouble(std::istream& stream);

void writeMarker(std::ostream& stream, Marker marker);
void writeU16(std::ostream& stream, std::uint16_t value);
void writeU32(std::ostream& stream, std::uint32_t value);
void writeDouble(std::ostream& stream, double value);
void writeText(std::ostream& stream, const std::string& text);

/// Takes the next byte; throws ParseException if it is another one than `marker`.
void expectMarker(std::istream& stream, Marker marker);

/// Takes `length` bytes, fewer if the stream ends before. Memory grows with what has arrived,
/// so a length that lies costs nothing.
std::string readText(std::istream& stream, std::size_t length);

}  // namespace kvl::amfmessage
