#include "kvl/amfmessage/AMF0Values.h"

#include <cstdint>
#include <limits>

#include "kvl/amfmessage/AMF0Wire.h"

namespace kvl::amfmessage {

std::istream& AMF0Number::read(std::istream& stream) {
    expectMarker(stream, Marker::number);
    value = readDouble(stream);
    return stream;
}

std::ostream& AMF0Number::write(std::ostream& stream) const {
    writeMarker(stream, Marker::number);
    writeDouble(stream, value);
    return stream;
}

std::istream& AMF0String::read(std::istream& stream) {
    switch (static_cast<Marker>(readByte(stream))) {
        case Marker::string:
            value = readText(stream, readU16(stream));
            break;
        case Marker::longString:
            value = readText(stream, readU32(stream));
            break;
        default:
            throw ParseException();
    }
    return stream;
}

std::ostream& AMF0String::write(std::ostream& stream) const {
    if (value.size() > std::numeric_limits<std::uint32_t>::max()) throw WriteException();
    if (value.size() < kShortStringLimit) {
        writeMarker(stream, Marker::string);
        writeU16(stream, static_cast<std::uint16_t>(value.size()));
    } else {
        writeMarker(stream, Marker::longString);
        writeU32(stream, static_cast<std::uint32_t>(value.size()));
    }
    writeText(stream, value);
    return stream;
}

std::istream& AMF0NoHeaderString::read(std::istream& stream) {
    value = readText(stream, readU16(stream));
    return stream;
}

std::ostream& AMF0NoHeaderString::write(std::ostream& stream) const {
    // On purpose: names have no long form, though AMF0String has one.
    // Pinned by AMF0NoHeaderStringTest.RefusesToWrite65536BytesAndWritesNothing.
    if (value.size() >= kShortStringLimit) throw WriteException();
    writeU16(stream, static_cast<std::uint16_t>(value.size()));
    writeText(stream, value);
    return stream;
}

}  // namespace kvl::amfmessage
