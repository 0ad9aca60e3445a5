#include "kvl/amfmessage/AMF0Markers.h"

#include <cstdint>

#include "kvl/amfmessage/AMF0Values.h"
#include "kvl/amfmessage/AMF0Wire.h"

namespace kvl::amfmessage {

namespace {

std::istream& readEnd(std::istream& stream) {
    AMF0NoHeaderString().read(stream);
    expectMarker(stream, Marker::objectEnd);
    return stream;
}

std::ostream& writeEnd(std::ostream& stream) {
    AMF0NoHeaderString().write(stream);
    writeMarker(stream, Marker::objectEnd);
    return stream;
}

/// Through a signed 64-bit integer, since a direct conversion is undefined outside 32 bits.
std::uint32_t truncated(double count) {
    constexpr double kLimit = 9223372036854775808.0;
    if (!(count > -kLimit && count < kLimit)) return 0;
    return static_cast<std::uint32_t>(static_cast<std::int64_t>(count));
}

}  // namespace

std::istream& AMF0ObjectBegin::read(std::istream& stream) {
    expectMarker(stream, Marker::object);
    return stream;
}

std::ostream& AMF0ObjectBegin::write(std::ostream& stream) const {
    writeMarker(stream, Marker::object);
    return stream;
}

std::istream& AMF0ObjectEnd::read(std::istream& stream) { return readEnd(stream); }

std::ostream& AMF0ObjectEnd::write(std::ostream& stream) const { return writeEnd(stream); }

std::istream& AMF0ArrayBegin::read(std::istream& stream) {
    expectMarker(stream, Marker::ecmaArray);
    // On purpose: the writer never counts the properties, so any other count is foreign.
    // Pinned by AMF0ArrayBeginTest.RefusesACountOtherThanZero.
    if (readU32(stream) != 0) throw ParseException();
    return stream;
}

std::ostream& AMF0ArrayBegin::write(std::ostream& stream) const {
    writeMarker(stream, Marker::ecmaArray);
    writeU32(stream, 0);
    return stream;
}

std::istream& AMF0ArrayEnd::read(std::istream& stream) { return readEnd(stream); }

std::ostream& AMF0ArrayEnd::write(std::ostream& stream) const { return writeEnd(stream); }

std::istream& AMF0StrictArrayBegin::read(std::istream& stream) {
    expectMarker(stream, Marker::strictArray);
    count = readU32(stream);
    return stream;
}

std::ostream& AMF0StrictArrayBegin::write(std::ostream& stream) const {
    writeMarker(stream, Marker::strictArray);
    // On purpose: a fraction is dropped.
    // Pinned by AMF0StrictArrayBeginTest.TruncatesAFractionWhenWriting.
    writeU32(stream, truncated(count));
    return stream;
}

}  // namespace kvl::amfmessage
