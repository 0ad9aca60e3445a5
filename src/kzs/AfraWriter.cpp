#include "kzs/AfraWriter.h"

#include <ostream>

#include "kzs/AfraFormat.h"
#include "kzs/AfraIndex.h"
#include "kzs/base/BoxFunctions.h"
#include "kzs/base/ByteOrder.h"

namespace torvo::kzs {
namespace {

constexpr std::size_t kHeadSize = 21;  // box header, version and flags, bits, timescale, count

template <bool kIsWide>
std::uint8_t* putSized(std::uint8_t* out, std::uint64_t value) {
    if constexpr (kIsWide) {
        storeU64(out, value);
        return out + 8;
    } else {
        storeU32(out, low32(value));
        return out + 4;
    }
}

template <bool kIsWide>
std::uint8_t* putId(std::uint8_t* out, std::uint32_t value) {
    if constexpr (kIsWide) {
        storeU32(out, value);
        return out + 4;
    } else {
        storeU16(out, static_cast<std::uint16_t>(value));
        return out + 2;
    }
}

/// What follows the local count. The widths are settled ahead of the entries: the index is
/// serialised for each fragment, with an entry for each fragment so far.
template <bool kLongIds, bool kLongOffsets>
void storeEntries(const AfraIndex& index, std::uint8_t* out) {
    // Times go out as their values, in whatever timescale they have.
    for (const AfraEntry& entry : index.localEntries) {
        out = putSized<true>(out, entry.time.value);
        out = putSized<kLongOffsets>(out, entry.offset);
    }
    if (index.globalEntries.empty()) return;
    out = putSized<false>(out, index.globalEntries.size());
    for (const AfraEntry& entry : index.globalEntries) {
        out = putSized<true>(out, entry.time.value);
        out = putId<kLongIds>(out, entry.segment);
        out = putId<kLongIds>(out, entry.fragment);
        out = putSized<kLongOffsets>(out, entry.afraOffset);
        out = putSized<kLongOffsets>(out, entry.offsetFromAfra);
    }
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
    std::uint8_t* const out = bytes.data();
    storeU32(out, low32(bytes.size()));
    storeU32(out + 4, fourCc("afra"));
    storeU32(out + 8, 0);
    out[12] = bitsOf(index);
    storeU32(out + 13, index.timescale);
    storeU32(out + 17, low32(index.localEntries.size()));
    constexpr void (*kStore[2][2])(const AfraIndex&, std::uint8_t*) = {
        {storeEntries<false, false>, storeEntries<false, true>},
        {storeEntries<true, false>, storeEntries<true, true>}};
    kStore[index.longIds ? 1 : 0][index.longOffsets ? 1 : 0](index, out + kHeadSize);
}

void writeAfra(std::ostream& stream, const AfraIndex& index) {
    std::vector<std::uint8_t> bytes;
    serialiseAfra(index, bytes);
    const StreamExceptionGuard guard(stream, std::ios::failbit | std::ios::badbit);
    stream.write(reinterpret_cast<const char*>(bytes.data()),
                 static_cast<std::streamsize>(bytes.size()));
}

}  // namespace torvo::kzs
