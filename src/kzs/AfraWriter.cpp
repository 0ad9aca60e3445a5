#include "kzs/AfraWriter.h"

#include <ostream>

#include "kzs/AfraFormat.h"
#include "kzs/AfraIndex.h"
#include "kzs/base/BoxFunctions.h"
#include "kzs/base/ByteOrder.h"

namespace torvo::kzs {
namespace {

constexpr std::size_t kHeadSize = 21;  // box header, version and flags, bits, timescale, count

std::uint8_t* putSized(std::uint8_t* out, std::uint64_t value, bool wide) {
    if (wide) {
        storeU64(out, value);
        return out + 8;
    }
    storeU32(out, low32(value));
    return out + 4;
}

std::uint8_t* putId(std::uint8_t* out, std::uint32_t value, bool wide) {
    if (wide) {
        storeU32(out, value);
        return out + 4;
    }
    storeU16(out, static_cast<std::uint16_t>(value));
    return out + 2;
}

std::uint8_t bitsOf(const AfraIndex& index) {
    // On purpose: the widths follow the two flags alone, whatever the values need.
    // Pinned by AfraWriterTest.CutsIdsAndOffsetsInTheShortForm.
    return static_cast<std::uint8_t>((index.longIds ? kAfraLongIds : 0) |
                                     (index.longOffsets ? kAfraLongOffsets : 0) |
                                     (index.globalEntries.empty() ? 0 : kAfraGlobalEntries));
}

std::size_t sizeOf(const AfraIndex& index) {
    const std::size_t offsetSize = index.longOffsets ? 8 : 4;
    const std::size_t idSize = index.longIds ? 4 : 2;
    const std::size_t local = index.localEntries.size() * (8 + offsetSize);
    const std::size_t global = index.globalEntries.size() * (8 + 2 * idSize + 2 * offsetSize);
    return kHeadSize + local + (index.globalEntries.empty() ? 0 : 4 + global);
}

}  // namespace

void serialiseAfra(const AfraIndex& index, std::vector<std::uint8_t>& bytes) {
    bytes.resize(sizeOf(index));
    std::uint8_t* out = bytes.data();
    storeU32(out, low32(bytes.size()));
    storeU32(out + 4, fourCc("afra"));
    storeU32(out + 8, 0);
    out[12] = bitsOf(index);
    storeU32(out + 13, index.timescale);
    storeU32(out + 17, low32(index.localEntries.size()));
    out += kHeadSize;
    // Times go out as their values, in whatever timescale they have.
    for (const AfraEntry& entry : index.localEntries) {
        out = putSized(out, entry.time.value, true);
        out = putSized(out, entry.offset, index.longOffsets);
    }
    if (index.globalEntries.empty()) return;
    out = putSized(out, index.globalEntries.size(), false);
    for (const AfraEntry& entry : index.globalEntries) {
        out = putSized(out, entry.time.value, true);
        out = putId(out, entry.segment, index.longIds);
        out = putId(out, entry.fragment, index.longIds);
        out = putSized(out, entry.afraOffset, index.longOffsets);
        out = putSized(out, entry.offsetFromAfra, index.longOffsets);
    }
}

void writeAfra(std::ostream& stream, const AfraIndex& index) {
    std::vector<std::uint8_t> bytes;
    serialiseAfra(index, bytes);
    const StreamExceptionGuard guard(stream, std::ios::failbit | std::ios::badbit);
    stream.write(reinterpret_cast<const char*>(bytes.data()),
                 static_cast<std::streamsize>(bytes.size()));
}

}  // namespace torvo::kzs
