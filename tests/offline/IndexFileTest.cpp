#include <gtest/gtest.h>

#include "kzs/AfraWriter.h"
#include "kzs/base/ByteOrder.h"
#include "offline/IndexFile.h"
#include "offline/OfflineException.h"
#include "offline/WatchedWrites.h"
#include "support/Presentation.h"
#include "support/TempDir.h"

namespace torvo::offline {
namespace {

using kz::test::hexTable;
using kz::test::TempDir;

kzs::AfraEntry entry(std::uint32_t fragment) {
    kzs::AfraEntry made;
    made.time = kzs::milliseconds(4000);
    made.segment = 2;
    made.fragment = fragment;
    made.afraOffset = 0x1234;
    return made;
}

/// The first piece of an index file has a front of 25 bytes and this many entries of 32, 262137
/// bytes; the second one a whole entry more.
constexpr std::uint32_t kEntriesInFirstPiece = 8191;

void append(kzs::AfraIndex& index, std::uint32_t count) {
    for (; count > 0; --count) {
        index.globalEntries.push_back(
            entry(static_cast<std::uint32_t>(index.globalEntries.size()) + 1));
    }
}

/// The index that a file tells of, whatever follows it.
std::vector<kz::test::IndexRow> rowsAtTheStartOf(const std::string& path) {
    const kz::test::Bytes file = kz::test::readFile(path);
    return kz::test::readAfraBox(file.slice(0, kzs::loadU32(file.data()))).global;
}

kz::test::Bytes boxOf(const kzs::AfraIndex& index) {
    std::vector<std::uint8_t> bytes;
    kzs::serialiseAfra(index, bytes);
    return kz::test::bytesOf(bytes.data(), bytes.size());
}

TEST(IndexFileTest, HoldsTheWholeIndexUnderTheNameOfItsSegment) {
    const TempDir folder;
    kzs::AfraIndex index;
    index.globalEntries = {entry(7)};
    IndexFile(folder.path(), "a%1%b").writeIndexFile(index, 12);
    EXPECT_EQ(kz::test::readFile(folder / "a%1%bSeg12.kzx"), hexTable(R"(
        0   00000039          size 57
        4   61667261          'afra'
        8   00000000          version 0, flags 0
        12  e0                long ids, long offsets, global entries
        13  000003e8          time scale
        17  00000000          local entries
        21  00000001          global entries
        25  0000000000000fa0  time
        33  00000002          segment
        37  00000007          fragment
        41  0000000000001234  offset
        49  0000000000000000  offset from there
    )"));
}

TEST(IndexFileTest, AnEmptyIndexHasNoGlobalCount) {
    const TempDir folder;
    IndexFile(folder.path(), "b").writeIndexFile(kzs::AfraIndex(), 1);
    EXPECT_EQ(kz::test::readFile(folder / "bSeg1.kzx"), hexTable(R"(
        0   00000015  size 21
        4   61667261  'afra'
        8   00000000  version 0, flags 0
        12  c0        long ids, long offsets
        13  000003e8  time scale
        17  00000000  local entries
    )"));
}

TEST(IndexFileTest, AShorterIndexLeavesNothingOfALongerOne) {
    const TempDir folder;
    IndexFile file(folder.path(), "b");
    kzs::AfraIndex index;
    index.globalEntries = {entry(1), entry(2), entry(3)};
    file.writeIndexFile(index, 1);
    index.globalEntries = {entry(1)};
    file.writeIndexFile(index, 1);
    EXPECT_EQ(kz::test::readFile(folder / "bSeg1.kzx").size(), 57U);
}

TEST(IndexFileTest, AFileOfAnEarlierRunIsDroppedWhateverItsSize) {
    const TempDir folder;
    folder.write("bSeg1.kzx", kz::test::fill(1000, 1));
    folder.write("bSeg2.kzx", kz::test::fill(1000, 1));
    kzs::AfraIndex index;
    index.globalEntries = {entry(1)};
    IndexFile file(folder.path(), "b");
    file.writeIndexFile(index, 1);
    file.writeIndexFile(index, 1);
    file.writeIndexFile(index, 2);
    EXPECT_EQ(kz::test::readFile(folder / "bSeg1.kzx").size(), 57U);
    EXPECT_EQ(kz::test::readFile(folder / "bSeg2.kzx").size(), 57U);
}

TEST(IndexFileTest, AGrowingIndexIsWhollyRewritten) {
    const TempDir folder;
    IndexFile file(folder.path(), "b");
    kzs::AfraIndex index;
    index.globalEntries = {entry(1)};
    file.writeIndexFile(index, 1);
    index.globalEntries = {entry(2), entry(3)};
    file.writeIndexFile(index, 1);
    IndexFile(folder.path(), "other").writeIndexFile(index, 1);
    EXPECT_EQ(kz::test::readFile(folder / "bSeg1.kzx"),
              kz::test::readFile(folder / "otherSeg1.kzx"));
}

TEST(IndexFileTest, TheNextSegmentLeavesTheFileOfTheOneBeforeAlone) {
    const TempDir folder;
    IndexFile file(folder.path(), "b");
    kzs::AfraIndex index;
    std::uint32_t number = 0;
    for (const std::uint32_t segment : {1U, 1U, 2U, 2U}) {
        index.globalEntries.push_back(entry(++number));
        file.writeIndexFile(index, segment);
    }
    file.close();
    // 25 bytes and 32 for each entry.
    EXPECT_EQ(kz::test::readFile(folder / "bSeg1.kzx").size(), 89U);
    EXPECT_EQ(kz::test::readFile(folder / "bSeg2.kzx").size(), 153U);
}

TEST(IndexFileTest, NumbersThatAreNotConsecutiveFailBeforeTheFileIsTouched) {
    const TempDir folder;
    for (const std::uint32_t second : {7U, 9U, 6U}) {
        kzs::AfraIndex index;
        index.globalEntries = {entry(6), entry(7), entry(second)};
        try {
            IndexFile(folder.path(), "b").writeIndexFile(index, 1);
            FAIL();
        } catch (const InvalidAfraException& failure) {
            EXPECT_EQ(failure.text(), "Afra Index is corrupt: last fragment: 7 current fragment: " +
                                          std::to_string(second));
        }
        EXPECT_FALSE(kz::test::fileExists(folder / "bSeg1.kzx"));
    }
}

TEST(IndexFileTest, AnIndexIsWrittenInAsFewCallsAsItHasPieces) {
    const TempDir folder;
    IndexFile file(folder.path(), "b");
    kzs::AfraIndex index;
    append(index, 1);
    {
        kz::test::WatchedWrites writes("bSeg1.kzx.part");
        file.writeIndexFile(index, 1);
        EXPECT_EQ(writes.take(), "0+57 ");
    }
    append(index, kEntriesInFirstPiece - 1);
    kz::test::WatchedWrites writes("bSeg1.kzx");
    file.writeIndexFile(index, 1);
    EXPECT_EQ(writes.take(), "57+262080 0+57 ");
    file.writeIndexFile(index, 1);
    EXPECT_EQ(writes.take(), "0+262137 ");
}

TEST(IndexFileTest, GrowsAcrossTheEndOfAPiece) {
    const TempDir folder;
    IndexFile file(folder.path(), "b");
    kzs::AfraIndex index;
    append(index, kEntriesInFirstPiece - 2);
    file.writeIndexFile(index, 1);
    for (int step = 0; step < 4; ++step) {
        append(index, 1);
        file.writeIndexFile(index, 1);
        EXPECT_EQ(kz::test::difference(kz::test::readFile(folder / "bSeg1.kzx"), boxOf(index)), "");
    }
    append(index, 20000);
    file.writeIndexFile(index, 1);
    EXPECT_EQ(kz::test::difference(kz::test::readFile(folder / "bSeg1.kzx"), boxOf(index)), "");
    // The next segment's file begins with pieces.
    file.writeIndexFile(index, 2);
    EXPECT_EQ(kz::test::difference(kz::test::readFile(folder / "bSeg2.kzx"), boxOf(index)), "");
}

TEST(IndexFileTest, PiecesAreWrittenLastOneFirst) {
    const TempDir folder;
    IndexFile file(folder.path(), "b");
    kzs::AfraIndex index;
    append(index, kEntriesInFirstPiece);
    file.writeIndexFile(index, 1);
    append(index, 8192 + 3);
    kz::test::WatchedWrites writes("bSeg1.kzx");
    file.writeIndexFile(index, 1);
    EXPECT_EQ(writes.take(), "524281+96 262137+262144 0+262137 ");
    append(index, 1);
    file.writeIndexFile(index, 1);
    EXPECT_EQ(writes.take(), "524377+32 524281+96 262137+262144 0+262137 ");
}

TEST(IndexFileTest, AKillAtAnyWriteLeavesWholeEntriesOnly) {
    const TempDir folder;
    IndexFile file(folder.path(), "b");
    kzs::AfraIndex index;
    append(index, kEntriesInFirstPiece - 1);
    file.writeIndexFile(index, 1);
    kz::test::WatchedWrites writes("bSeg1.kzx");
    std::vector<std::size_t> counts;
    writes.beforeEach([&] {
        const auto entries = rowsAtTheStartOf(folder / "bSeg1.kzx");
        counts.push_back(entries.size());
        EXPECT_EQ(entries.back().fragment, entries.size());
    });
    for (const std::uint32_t more : {1U, 1U, 10000U, 1U}) {
        append(index, more);
        file.writeIndexFile(index, 1);
    }
    EXPECT_EQ(counts, (std::vector<std::size_t>{8190, 8190,              // growth, front
                                                8191, 8191,              // second piece, front
                                                8192, 8192, 8192, 8192,  // third, second's growth
                                                18192, 18192, 18192, 18192}));
}

TEST(IndexFileTest, AnEntryOfAnEarlierPieceThatChangesLaterIsInTheFile) {
    const TempDir folder;
    IndexFile file(folder.path(), "b");
    kzs::AfraIndex index;
    append(index, kEntriesInFirstPiece + 10000);
    file.writeIndexFile(index, 1);
    file.writeIndexFile(index, 1);
    index.globalEntries[5].afraOffset = 0x777;
    index.globalEntries[kEntriesInFirstPiece + 5].afraOffset = 0x888;
    append(index, 1);
    file.writeIndexFile(index, 1);
    const auto entries = kz::test::readAfraBox(kz::test::readFile(folder / "bSeg1.kzx")).global;
    ASSERT_EQ(entries.size(), kEntriesInFirstPiece + 10001U);
    EXPECT_EQ(entries[5].afraOffset, 0x777U);
    EXPECT_EQ(entries[kEntriesInFirstPiece + 5].afraOffset, 0x888U);
}

TEST(IndexFileTest, AWriteOfAnyPieceThatFailsIsAStreamFailure) {
    for (std::size_t succeeding = 0; succeeding < 4; ++succeeding) {
        const TempDir folder;
        IndexFile file(folder.path(), "b");
        kzs::AfraIndex index;
        append(index, kEntriesInFirstPiece + 8192 + 5);
        file.writeIndexFile(index, 1);
        append(index, 1);
        kz::test::WatchedWrites writes("bSeg1.kzx");
        writes.failAfter(succeeding);
        EXPECT_THROW(file.writeIndexFile(index, 1), std::ios_base::failure) << succeeding;
    }
}

TEST(IndexFileTest, ABreakInWhatWasAddedFailsBeforeTheFileIsTouched) {
    const TempDir folder;
    IndexFile file(folder.path(), "b");
    kzs::AfraIndex index;
    append(index, 3);
    file.writeIndexFile(index, 1);
    index.globalEntries.push_back(entry(5));
    kz::test::WatchedWrites writes("bSeg1.kzx");
    // Whoever tries again finds it again.
    for (int trial = 0; trial < 2; ++trial) {
        EXPECT_THROW(file.writeIndexFile(index, 1), InvalidAfraException);
    }
    EXPECT_EQ(writes.take(), "");
    EXPECT_EQ(kz::test::readFile(folder / "bSeg1.kzx").size(), 25U + 3 * 32);
}

TEST(IndexFileTest, AFolderInTheFilesPlaceIsAStreamFailure) {
    const TempDir folder;
    EXPECT_THROW(IndexFile(folder / "none", "b").writeIndexFile(kzs::AfraIndex(), 1),
                 std::ios_base::failure);
}

}  // namespace
}  // namespace torvo::offline
