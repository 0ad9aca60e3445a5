#include <gtest/gtest.h>

#include "kzm/impl/BoxSupport.h"
#include "kzm/impl/HeaderDates.h"
#include "kzm/impl/MvhdBox.h"

namespace qlix::kzm::impl {
namespace {

using namespace kz::test;

MovieHeader movieFields() {
    MovieHeader out;
    out.creationDate = secondDay();
    out.modificationDate = tenthSecond();
    out.timescale = 1000;
    out.duration = 0x123456789;
    out.rate = 1.5;
    out.volume = 0.75;
    out.nextTrackId = 4;
    return out;
}

const char* const kMvhd = R"(
    0    00000078          size 120
    4    6d766864          'mvhd'
    8    01000000          version 1, flags 0
    12   0000000000015180  creation: 86400 s
    20   000000000000000a  modification: 10 s
    28   000003e8          timescale 1000
    32   0000000123456789  duration
    40   00018000          rate 1.5
    44   00c0              volume 0.75
    46   0000              reserved
    48   0000000000000000  reserved
    56   000100000000000000000000  matrix: 1 0 0
    68   000000000001000000000000  0 1 0
    80   000000000000000040000000  0 0 1
    92   000000000000000000000000  pre-defined
    104  000000000000000000000000
    116  00000004          next track id
)";

TEST(MvhdBoxTest, WritesVersionOne) {
    WriteFile file;
    MvhdBox box(file.context(), movieFields());
    EXPECT_EQ(difference(written(file, box), hexTable(kMvhd)), "");
}

TEST(MvhdBoxTest, RewritesDurationAndNextTrackId) {
    WriteFile file;
    MvhdBox box(file.context(), movieFields());
    box.write();
    box.setDuration(0x1122334455667788);
    box.setNextTrackId(9);
    box.write();
    EXPECT_EQ(difference(file.bytes(),
                         hexTable(kMvhd).patched(32, u64(0x1122334455667788)).patched(116, u32(9))),
              "");
}

TEST(MvhdBoxTest, ReadsVersionOne) {
    ReadFile file(hexTable(kMvhd));
    const MovieHeader movie = readAs<MvhdBox>(file)->movie();
    EXPECT_EQ(movie.creationDate, secondDay());
    EXPECT_EQ(movie.modificationDate, tenthSecond());
    EXPECT_EQ(movie.timescale, 1000U);
    EXPECT_EQ(movie.duration, 0x123456789U);
    EXPECT_EQ(movie.rate, 1.5);
    EXPECT_EQ(movie.volume, 0.75);
    EXPECT_EQ(movie.nextTrackId, 4U);
}

Bytes shortMvhd() {
    return fullBox("mvhd", 0, 0, u32(86400), u32(10), u32(600), u32(0xFFFFFFFF), u32(0x20000),
                   u16(0x0100), fill(10, 0), fill(36, 0), fill(24, 0), u32(3));
}

TEST(MvhdBoxTest, ReadsVersionZeroWith32BitTimes) {
    ReadFile file(shortMvhd());
    const MovieHeader movie = readAs<MvhdBox>(file)->movie();
    EXPECT_EQ(movie.creationDate, secondDay());
    EXPECT_EQ(movie.modificationDate, tenthSecond());
    EXPECT_EQ(movie.timescale, 600U);
    EXPECT_EQ(movie.duration, 0xFFFFFFFFU);
    EXPECT_EQ(movie.rate, 2.0);
    EXPECT_EQ(movie.volume, 1.0);
    EXPECT_EQ(movie.nextTrackId, 3U);
}

TEST(MvhdBoxTest, ReadsVersionTwoAsVersionOne) {
    ReadFile file(hexTable(kMvhd).patched(8, u8(2)));
    EXPECT_EQ(readAs<MvhdBox>(file)->movie().duration, 0x123456789U);
}

TEST(MvhdBoxTest, NeedsAllItsBytes) {
    EXPECT_EQ(codesWhenCut(hexTable(kMvhd)), codesOfAFullBox(120));
    EXPECT_EQ(codesWhenCut(shortMvhd()), codesOfAFullBox(108));
}

}  // namespace
}  // namespace qlix::kzm::impl
