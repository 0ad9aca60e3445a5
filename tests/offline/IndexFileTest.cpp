#include <gtest/gtest.h>

#include "offline/IndexFile.h"
#include "offline/OfflineException.h"
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

TEST(IndexFileTest, AFolderInTheFilesPlaceIsAStreamFailure) {
    const TempDir folder;
    EXPECT_THROW(IndexFile(folder / "none", "b").writeIndexFile(kzs::AfraIndex(), 1),
                 std::ios_base::failure);
}

}  // namespace
}  // namespace torvo::offline
