#include <sstream>

#include <gtest/gtest.h>

#include "kzs/AfraIndex.h"
#include "kzs/AfraReader.h"
#include "kzs/AfraWriter.h"
#include "support/Bytes.h"
#include "support/Random.h"

namespace torvo::kzs {
namespace {

using kz::test::Bytes;
using kz::test::bytesOf;
using kz::test::difference;
using kz::test::hex;
using kz::test::hexTable;
using kz::test::u32;

constexpr const char* kRefusal = "Could not parse afra index";

AfraEntry globalEntry(std::uint64_t time, std::uint32_t segment, std::uint32_t fragment,
                      std::uint64_t afraOffset) {
    AfraEntry entry;
    entry.time = milliseconds(time);
    entry.segment = segment;
    entry.fragment = fragment;
    entry.afraOffset = afraOffset;
    return entry;
}

AfraIndex twoOfEach() {
    AfraIndex index;
    AfraEntry local;
    local.time = milliseconds(500);
    local.offset = 0x1234;
    index.localEntries = {local};
    index.globalEntries = {globalEntry(0, 1, 1, 0x2C),
                           globalEntry(4000, 0x10002, 0x10003, kNoFragmentData)};
    index.globalEntries[0].offsetFromAfra = 7;
    return index;
}

Bytes longForm() {
    return hexTable(R"(
        0    00000069           size 105
        4    61667261           'afra'
        8    00000000           version 0, flags 0
        12   e0                 long ids, long offsets, global entries
        13   000003e8           timescale 1000
        17   00000001           local entries
        21   00000000000001f4   500 ms
        29   0000000000001234   offset
        37   00000002           global entries
        41   0000000000000000   0 ms
        49   00000001           segment
        53   00000001           fragment
        57   000000000000002c   offset of the fragment
        65   0000000000000007   offset from afra
        73   0000000000000fa0   4000 ms
        81   00010002           segment
        85   00010003           fragment
        89   ffffffffffffffff   no data
        97   0000000000000000
    )");
}

Bytes shortForm() {
    return hexTable(R"(
        0    0000004d           size 77
        4    61667261           'afra'
        8    00000000
        12   20                 global entries
        13   000003e8           timescale 1000
        17   00000001           local entries
        21   00000000000001f4   500 ms
        29   00001234           offset
        33   00000002           global entries
        37   0000000000000000   0 ms
        45   0001               segment
        47   0001               fragment
        49   0000002c           offset of the fragment
        53   00000007           offset from afra
        57   0000000000000fa0   4000 ms
        65   0002               segment, low 16 bits
        67   0003               fragment, low 16 bits
        69   ffffffff           no data, low 32 bits
        73   00000000
    )");
}

Bytes written(const AfraIndex& index) {
    std::ostringstream stream;
    writeAfra(stream, index);
    return bytesOf(stream.str());
}

AfraIndex readFrom(const Bytes& bytes) {
    std::istringstream stream(bytes.str());
    AfraIndex index;
    readAfra(stream, index);
    return index;
}

std::string refusalOf(const Bytes& bytes) {
    try {
        readFrom(bytes);
    } catch (const InvalidAfraFormat& e) {
        return e.what();
    }
    return "";
}

TEST(AfraWriterTest, LaysOutTheLongForm) {
    EXPECT_EQ(difference(written(twoOfEach()), longForm()), "");
}

TEST(AfraWriterTest, CutsIdsAndOffsetsInTheShortForm) {
    AfraIndex index = twoOfEach();
    index.longIds = false;
    index.longOffsets = false;
    EXPECT_EQ(difference(written(index), shortForm()), "");
}

TEST(AfraWriterTest, ChoosesTheTwoWidthsApart) {
    AfraIndex index;
    index.globalEntries = {globalEntry(0, 1, 1, 5)};
    index.longIds = false;
    EXPECT_EQ(written(index).slice(12, 1), hex("60"));
    EXPECT_EQ(written(index).size(), 25U + 28);
    index.longIds = true;
    index.longOffsets = false;
    EXPECT_EQ(written(index).slice(12, 1), hex("a0"));
    EXPECT_EQ(written(index).size(), 25U + 24);
}

TEST(AfraWriterTest, EndsBehindTheLocalCountWhenNothingIsGlobal) {
    EXPECT_EQ(difference(written(AfraIndex()), hexTable(R"(
        0    00000015   size 21
        4    61667261   'afra'
        8    00000000
        12   c0         long ids, long offsets
        13   000003e8
        17   00000000   no local entries
    )")),
              "");
}

TEST(AfraWriterTest, LaysOutTheIndexOfASingleFragment) {
    AfraIndex index;
    index.globalEntries = {globalEntry(0, 1, 1, 0x20C)};
    EXPECT_EQ(difference(written(index), hexTable(R"(
        0    00000039           size 57
        4    61667261           'afra'
        8    00000000
        12   e0
        13   000003e8
        17   00000000           no local entries
        21   00000001           one global entry of 32 bytes
        25   0000000000000000
        33   00000001
        37   00000001
        41   000000000000020c
        49   0000000000000000
    )")),
              "");
}

TEST(AfraWriterTest, WritesTimesAsTheyStandWhateverTheirTimescale) {
    AfraIndex index;
    index.globalEntries = {globalEntry(0, 1, 1, 0)};
    index.globalEntries[0].time = Timestamp{90000, 90000, {0, 0}};
    EXPECT_EQ(written(index).slice(25, 8), kz::test::u64(90000));
}

TEST(AfraWriterTest, WritesFromTheStreamsPosition) {
    std::ostringstream stream;
    stream << "ab";
    writeAfra(stream, twoOfEach());
    EXPECT_EQ(difference(bytesOf(stream.str()), kz::test::text("ab") + longForm()), "");
}

TEST(AfraWriterTest, ReplacesTheBytesItIsGiven) {
    std::vector<std::uint8_t> bytes(1000, 0xEE);
    serialiseAfra(twoOfEach(), bytes);
    EXPECT_EQ(difference(bytesOf(bytes.data(), bytes.size()), longForm()), "");
}

TEST(AfraWriterTest, FailsAsTheStreamDoesAndRestoresItsSetting) {
    std::ostringstream stream;
    stream.setstate(std::ios::badbit);
    EXPECT_THROW(writeAfra(stream, twoOfEach()), std::ios_base::failure);
    EXPECT_EQ(stream.exceptions(), std::ios::goodbit);
}

/// Entries of 32 bytes behind a front of 25, with values that are all different.
AfraIndex indexOf(std::uint32_t count) {
    AfraIndex index;
    for (std::uint32_t n = 1; n <= count; ++n) {
        index.globalEntries.push_back(globalEntry(n * 500, 1 + n / 1000, n, n * 9001));
    }
    return index;
}

/// The size of each piece; expects that together they are the box.
std::vector<std::size_t> piecesOf(const AfraIndex& index) {
    const AfraPieces pieces(index);
    std::vector<std::size_t> sizes;
    std::vector<std::uint8_t> bytes(1000, 0xEE);
    Bytes all;
    for (std::size_t piece = 0; piece < pieces.count(); ++piece) {
        EXPECT_EQ(pieces.offsetOf(piece), all.size());
        pieces.serialise(piece, bytes);
        sizes.push_back(bytes.size());
        all += bytesOf(bytes.data(), bytes.size());
    }
    EXPECT_EQ(pieces.totalSize(), all.size());
    serialiseAfra(index, bytes);
    EXPECT_EQ(difference(all, bytesOf(bytes.data(), bytes.size())), "");
    return sizes;
}

TEST(AfraPiecesTest, AShortIndexIsOnePiece) {
    using Sizes = std::vector<std::size_t>;
    EXPECT_EQ(piecesOf(AfraIndex()), Sizes{21});
    EXPECT_EQ(piecesOf(twoOfEach()), Sizes{105});
    EXPECT_EQ(piecesOf(indexOf(8191)), Sizes{262137});
}

TEST(AfraPiecesTest, ALongIndexIsCutBetweenEntries) {
    using Sizes = std::vector<std::size_t>;
    EXPECT_EQ(piecesOf(indexOf(8192)), (Sizes{262137, 32}));
    EXPECT_EQ(piecesOf(indexOf(8191 + 8192)), (Sizes{262137, 262144}));
    EXPECT_EQ(piecesOf(indexOf(8191 + 2 * 8192 + 2)), (Sizes{262137, 262144, 262144, 64}));
}

TEST(AfraPiecesTest, PiecesFollowTheWidths) {
    AfraIndex index = indexOf(20000);
    index.longIds = false;
    index.longOffsets = false;
    index.globalEntries[19999].segment = 0x10002;
    // 20 bytes an entry: 13105 behind the front of 25.
    EXPECT_EQ(piecesOf(index), (std::vector<std::size_t>{262125, 20 * (20000 - 13105)}));
}

TEST(AfraPiecesTest, LocalEntriesAreAllInTheFirstPiece) {
    AfraIndex index = indexOf(2);
    index.localEntries.resize(20000);
    index.localEntries.back().offset = 7;
    EXPECT_EQ(piecesOf(index), (std::vector<std::size_t>{21 + 16 * 20000 + 4, 64}));
}

TEST(AfraReaderTest, ReadsTheLongForm) { EXPECT_TRUE(readFrom(longForm()) == twoOfEach()); }

TEST(AfraReaderTest, ReadsTheShortFormWithItsCutValues) {
    const AfraIndex index = readFrom(shortForm());
    EXPECT_FALSE(index.longIds);
    EXPECT_FALSE(index.longOffsets);
    ASSERT_EQ(index.globalEntries.size(), 2U);
    EXPECT_EQ(index.localEntries.at(0).offset, 0x1234U);
    EXPECT_EQ(index.globalEntries[0].offsetFromAfra, 7U);
    EXPECT_EQ(index.globalEntries[1].segment, 2U);
    EXPECT_EQ(index.globalEntries[1].fragment, 3U);
    EXPECT_EQ(index.globalEntries[1].afraOffset, 0xFFFFFFFFU);
}

TEST(AfraReaderTest, GivesTimesInMillisecondsWhateverTheBoxSays) {
    const AfraIndex index = readFrom(longForm().patched(13, u32(90000)));
    EXPECT_EQ(index.timescale, 90000U);
    EXPECT_EQ(index.localEntries[0].time.timescale, 1000U);
    EXPECT_EQ(index.globalEntries[1].time.timescale, 1000U);
    EXPECT_EQ(index.globalEntries[1].time.value, 4000U);
}

TEST(AfraReaderTest, ReadsNoGlobalCountWithoutItsBit) {
    std::istringstream stream(longForm().patched(12, hex("c0")).str());
    AfraIndex index;
    readAfra(stream, index);
    EXPECT_TRUE(index.globalEntries.empty());
    EXPECT_EQ(stream.tellg(), std::streampos(37));
    EXPECT_EQ(stream.exceptions(), std::ios::goodbit);
}

TEST(AfraReaderTest, RefusesVersion1) {
    EXPECT_EQ(refusalOf(longForm().patched(8, hex("01"))), kRefusal);
}

TEST(AfraReaderTest, IgnoresTheFlags) {
    EXPECT_TRUE(readFrom(longForm().patched(9, hex("ffffff"))) == twoOfEach());
}

TEST(AfraReaderTest, RefusesAnotherType) {
    EXPECT_EQ(refusalOf(longForm().patched(4, kz::test::text("abst"))), kRefusal);
}

TEST(AfraReaderTest, RefusesAFileCutAnywhere) {
    for (std::size_t length = 0; length < longForm().size(); ++length) {
        EXPECT_EQ(refusalOf(longForm().cutTo(length)), kRefusal) << length;
    }
}

TEST(AfraReaderTest, RefusesCountsBeyondTheFileWithoutTakingMemoryForThem) {
    EXPECT_EQ(refusalOf(longForm().patched(17, u32(0xFFFFFFFF))), kRefusal);
    EXPECT_EQ(refusalOf(longForm().patched(37, u32(0xFFFFFFFF))), kRefusal);
}

TEST(AfraReaderTest, LeavesTheIndexAloneWhenItFails) {
    AfraIndex index = twoOfEach();
    std::istringstream stream(longForm().cutTo(60).str());
    EXPECT_THROW(readAfra(stream, index), InvalidAfraFormat);
    EXPECT_TRUE(index == twoOfEach());
}

TEST(AfraPropertyTest, AnyIndexIsReadBackAsItWasWritten) {
    for (unsigned seed = 1; seed <= 300; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        kz::test::Random random(seed);
        AfraIndex index;
        index.longIds = random() % 2 != 0;
        index.longOffsets = random() % 2 != 0;
        index.timescale = static_cast<std::uint32_t>(random());
        const std::uint64_t offsets = index.longOffsets ? ~std::uint64_t{0} : 0xFFFFFFFF;
        const std::uint64_t ids = index.longIds ? 0xFFFFFFFF : 0xFFFF;
        index.localEntries.resize(random() % 5);
        for (AfraEntry& entry : index.localEntries) {
            entry.time = milliseconds(random.u64());
            entry.offset = random.u64() & offsets;
        }
        index.globalEntries.resize(random() % 5);
        for (AfraEntry& entry : index.globalEntries) {
            entry = globalEntry(random.u64(), static_cast<std::uint32_t>(random() & ids),
                                static_cast<std::uint32_t>(random() & ids), random.u64() & offsets);
            entry.offsetFromAfra = random.u64() & offsets;
        }
        const Bytes bytes = written(index);
        EXPECT_TRUE(readFrom(bytes) == index);
        for (std::size_t length = 0; length < bytes.size(); ++length) {
            ASSERT_EQ(refusalOf(bytes.cutTo(length)), kRefusal) << length;
        }
    }
}

}  // namespace
}  // namespace torvo::kzs
