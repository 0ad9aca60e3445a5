#include "kzs/AfraWriter.h"

#include <algorithm>
#include <deque>
#include <ostream>

#include "kzs/AfraFormat.h"
#include "kzs/AfraIndex.h"
#include "kzs/base/ByteOrder.h"
#include "kzs/base/StreamExceptionGuard.h"

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

using Entries = std::deque<AfraEntry>::const_iterator;

/// Times go out as their values, in whatever timescale they have. The widths are settled ahead of
/// the entries: the index is serialised for each fragment, with an entry for each fragment so far.
template <bool kLongIds, bool kLongOffsets>
void storeGlobalEntries(const Entries& first, std::size_t count, std::uint8_t* out) {
    // An iterator that nobody else can reach stays in registers.
    for (Entries next = first; count > 0; ++next, --count) {
        const AfraEntry& entry = *next;
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

std::size_t localEntrySizeOf(const AfraIndex& index) { return 8 + (index.longOffsets ? 8U : 4U); }

std::size_t globalEntrySizeOf(const AfraIndex& index) {
    return 8 + 2 * (index.longIds ? 4U : 2U) + 2 * (index.longOffsets ? 8U : 4U);
}

std::size_t frontSizeOf(const AfraIndex& index) {
    return kHeadSize + index.localEntries.size() * localEntrySizeOf(index) +
           (index.globalEntries.empty() ? 0 : 4);
}

std::size_t sizeOf(const AfraIndex& index) {
    return frontSizeOf(index) + index.globalEntries.size() * globalEntrySizeOf(index);
}

/// All that is before the global entries. Returns its end.
std::uint8_t* storeFront(const AfraIndex& index, std::uint8_t* out) {
    storeU32(out, low32(sizeOf(index)));
    storeU32(out + 4, fourCc("afra"));
    storeU32(out + 8, 0);
    out[12] = bitsOf(index);
    storeU32(out + 13, index.timescale);
    storeU32(out + 17, low32(index.localEntries.size()));
    out += kHeadSize;
    for (const AfraEntry& entry : index.localEntries) {
        out = putSized<true>(out, entry.time.value);
        out = index.longOffsets ? putSized<true>(out, entry.offset)
                                : putSized<false>(out, entry.offset);
    }
    return index.globalEntries.empty() ? out : putSized<false>(out, index.globalEntries.size());
}

/// The front, if asked for, and the global entries from `first` up to `end`.
void serialisePart(const AfraIndex& index, bool withFront, std::size_t first, std::size_t end,
                   std::vector<std::uint8_t>& bytes) {
    bytes.resize((withFront ? frontSizeOf(index) : 0) + (end - first) * globalEntrySizeOf(index));
    std::uint8_t* const out = withFront ? storeFront(index, bytes.data()) : bytes.data();
    constexpr void (*kStore[2][2])(const Entries&, std::size_t, std::uint8_t*) = {
        {storeGlobalEntries<false, false>, storeGlobalEntries<false, true>},
        {storeGlobalEntries<true, false>, storeGlobalEntries<true, true>}};
    kStore[index.longIds ? 1 : 0][index.longOffsets ? 1 : 0](
        index.globalEntries.begin() + static_cast<std::ptrdiff_t>(first), end - first, out);
}

}  // namespace

AfraPieces::AfraPieces(const AfraIndex& index)
    : index_(index),
      frontSize_(frontSizeOf(index)),
      entrySize_(globalEntrySizeOf(index)),
      entriesInFirst_(frontSize_ < kMaxSize ? (kMaxSize - frontSize_) / entrySize_ : 0) {}

std::size_t AfraPieces::firstEntryOf(std::size_t piece) const {
    if (piece == 0) return 0;
    return std::min(index_.globalEntries.size(),
                    entriesInFirst_ + (piece - 1) * (kMaxSize / entrySize_));
}

std::size_t AfraPieces::count() const {
    const std::size_t entries = index_.globalEntries.size();
    if (entries <= entriesInFirst_) return 1;
    const std::size_t entriesInOthers = kMaxSize / entrySize_;
    return 1 + (entries - entriesInFirst_ + entriesInOthers - 1) / entriesInOthers;
}

std::size_t AfraPieces::offsetOf(std::size_t piece) const {
    return piece == 0 ? 0 : frontSize_ + firstEntryOf(piece) * entrySize_;
}

std::size_t AfraPieces::totalSize() const { return sizeOf(index_); }

void AfraPieces::serialise(std::size_t piece, std::vector<std::uint8_t>& bytes) const {
    serialisePart(index_, piece == 0, firstEntryOf(piece), firstEntryOf(piece + 1), bytes);
}

void serialiseAfra(const AfraIndex& index, std::vector<std::uint8_t>& bytes) {
    serialisePart(index, true, 0, index.globalEntries.size(), bytes);
}

void writeAfra(std::ostream& stream, const AfraIndex& index) {
    std::vector<std::uint8_t> bytes;
    serialiseAfra(index, bytes);
    const StreamExceptionGuard guard(stream, std::ios::failbit | std::ios::badbit);
    stream.write(reinterpret_cast<const char*>(bytes.data()),
                 static_cast<std::streamsize>(bytes.size()));
}

}  // namespace torvo::kzs
