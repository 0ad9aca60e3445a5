#include "kvl/amfmessage/AMF0Wire.h"

#include <algorithm>
#include <array>

#include <boost/endian/conversion.hpp>

#include "kvl/amfmessage/AMF0Base.h"

namespace kvl::amfmessage {

namespace {

using boost::endian::endian_load;
using boost::endian::endian_store;
using boost::endian::order;

constexpr std::size_t kReadBlock = 65536;

char* asChars(unsigned char* bytes) { return reinterpret_cast<char*>(bytes); }

template <typename T>
T readBigEndian(std::istream& stream) {
    std::array<unsigned char, sizeof(T)> bytes{};
    stream.read(asChars(bytes.data()), sizeof(T));
    return endian_load<T, sizeof(T), order::big>(bytes.data());
}

template <typename T>
void writeBigEndian(std::ostream& stream, T value) {
    std::array<unsigned char, sizeof(T)> bytes{};
    endian_store<T, sizeof(T), order::big>(bytes.data(), value);
    stream.write(asChars(bytes.data()), sizeof(T));
}

}  // namespace

std::uint8_t readByte(std::istream& stream) { return readBigEndian<std::uint8_t>(stream); }

std::uint16_t readU16(std::istream& stream) { return readBigEndian<std::uint16_t>(stream); }

std::uint32_t readU32(std::istream& stream) { return readBigEndian<std::uint32_t>(stream); }

double readDouble(std::istream& stream) { return readBigEndian<double>(stream); }

void writeMarker(std::ostream& stream, Marker marker) {
    writeBigEndian(stream, static_cast<std::uint8_t>(marker));
}

void writeU16(std::ostream& stream, std::uint16_t value) { writeBigEndian(stream, value); }

void writeU32(std::ostream& stream, std::uint32_t value) { writeBigEndian(stream, value); }

void writeDouble(std::ostream& stream, double value) { writeBigEndian(stream, value); }

void writeText(std::ostream& stream, const std::string& text) {
    stream.write(text.data(), static_cast<std::streamsize>(text.size()));
}

void expectMarker(std::istream& stream, Marker marker) {
    if (readByte(stream) != static_cast<std::uint8_t>(marker)) throw ParseException();
}

std::string readText(std::istream& stream, std::size_t length) {
    std::string text;
    while (text.size() < length && stream) {
        const std::size_t before = text.size();
        const std::size_t wanted = std::min(length - before, kReadBlock);
        text.resize(before + wanted);
        stream.read(&text[before], static_cast<std::streamsize>(wanted));
        text.resize(before + static_cast<std::size_t>(stream.gcount()));
    }
    return text;
}

}  // namespace kvl::amfmessage
