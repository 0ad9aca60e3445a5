#include <gtest/gtest.h>

#include "kzm/impl/BoxSupport.h"
#include "kzm/impl/HeaderDates.h"
#include "kzm/impl/TkhdBox.h"

namespace qlix::kzm::impl {
namespace {

using namespace kz::test;

TrackHeader trackFields() {
    TrackHeader out;
    out.creationDate = secondDay();
    out.modificationDate = tenthSecond();
    out.trackId = 2;
    out.duration = 0x100000002;
    out.volume = 1.0;
    out.width = 640.5;
    out.height = 360.0;
    return out;
}

const char* const kTkhd = R"(
    0    00000068          size 104
    4    746b6864          'tkhd'
    8    01000007          version 1, flags 7
    12   0000000000015180  creation
    20   000000000000000a  modification
    28   00000002          track id
    32   00000000          reserved
    36   0000000100000002  duration
    44   0000000000000000  reserved
    52   0000              layer
    54   0000              alternate group
    56   0100              volume 1.0
    58   0000              reserved
    60   000100000000000000000000  matrix
    72   000000000001000000000000
    84   000000000000000040000000
    96   02808000          width 640.5
    100  01680000          height 360
)";

TEST(TkhdBoxTest, WritesVersionOne) {
    WriteFile file;
    TkhdBox box(file.context(), 7, trackFields());
    EXPECT_EQ(difference(written(file, box), hexTable(kTkhd)), "");
}

TEST(TkhdBoxTest, RewritesTheDuration) {
    WriteFile file;
    TkhdBox box(file.context(), 7, trackFields());
    box.write();
    box.setDuration(5);
    box.write();
    EXPECT_EQ(difference(file.bytes(), hexTable(kTkhd).patched(36, u64(5))), "");
}

TEST(TkhdBoxTest, ReadsVersionOne) {
    ReadFile file(hexTable(kTkhd));
    const auto read = readAs<TkhdBox>(file);
    EXPECT_EQ(read->flags(), 7U);
    EXPECT_EQ(read->track().creationDate, secondDay());
    EXPECT_EQ(read->track().modificationDate, tenthSecond());
    EXPECT_EQ(read->track().trackId, 2U);
    EXPECT_EQ(read->track().duration, 0x100000002U);
    EXPECT_EQ(read->track().volume, 1.0);
    EXPECT_EQ(read->track().width, 640.5);
    EXPECT_EQ(read->track().height, 360.0);
}

Bytes shortTkhd() {
    return fullBox("tkhd", 0, 3, u32(86400), u32(10), u32(9), u32(0), u32(77), fill(12, 0),
                   u16(0x80), u16(0), fill(36, 0), u32(0x10000), u32(0x8000));
}

TEST(TkhdBoxTest, ReadsVersionZeroWith32BitTimes) {
    ReadFile file(shortTkhd());
    const TrackHeader track = readAs<TkhdBox>(file)->track();
    EXPECT_EQ(track.trackId, 9U);
    EXPECT_EQ(track.duration, 77U);
    EXPECT_EQ(track.volume, 0.5);
    EXPECT_EQ(track.width, 1.0);
    EXPECT_EQ(track.height, 0.5);
}

TEST(TkhdBoxTest, NeedsAllItsBytes) {
    EXPECT_EQ(codesWhenCut(hexTable(kTkhd)), codesOfAFullBox(104));
    EXPECT_EQ(codesWhenCut(shortTkhd()), codesOfAFullBox(92));
}

}  // namespace
}  // namespace qlix::kzm::impl
