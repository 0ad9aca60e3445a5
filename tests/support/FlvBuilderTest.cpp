#include <gtest/gtest.h>

#include "support/AmfBuilder.h"
#include "support/Bytes.h"
#include "support/FlvBuilder.h"

namespace kz::test {
namespace {

TEST(FlvBuilderTest, LaysOutTheHeaderAndATag) {
    EXPECT_EQ(flvFile({avcFrame(0x12345678, true, raw({0xaa}), -2)}, 1), hexTable(R"(
        0   464c5601   'FLV', version 1
        4   01         video only
        5   00000009   data offset
        9   00000000   size of the tag before the first
        13  09         video
        14  000006     body size
        17  345678     time, low 24 bits
        20  12         time, high 8 bits
        21  000000     stream id
        24  17         key frame, AVC
        25  01         a frame
        26  fffffe     composition offset -2
        29  aa
        30  00000011   17: header and body
    )"));
}

TEST(FlvBuilderTest, LiesOnlyWhereAsked) {
    const FlvTag tag = mp3Frame(0, raw({1}));
    EXPECT_EQ(tag.claimingBody(9).image(), tag.image().patched(1, u24(9)));
    EXPECT_EQ(tag.claimingTag(9).image(), tag.image().patched(13, u32(9)));
}

TEST(AmfBuilderTest, LaysOutNestedValues) {
    EXPECT_EQ(amfEcmaArray({{"a", amfObject({{"b", amfBool(true)}})}}), hexTable(R"(
        0   08         array with names
        1   00000001   one member
        5   000161     'a'
        8   03         object
        9   000162     'b'
        12  0101       true
        14  000009     end of the object
        17  000009     end of the array
    )"));
}

}  // namespace
}  // namespace kz::test
