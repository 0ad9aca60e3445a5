#include <stdexcept>

#include <gtest/gtest.h>

#include "support/Bytes.h"

namespace kz::test {
namespace {

TEST(BytesTest, WritesIntegersHighByteFirst) {
    EXPECT_EQ(u8(0x1ff) + u16(0x0102) + u24(0x030405) + u32(0x06070809) + u64(10),
              raw({0xff, 1, 2, 3, 4, 5, 6, 7, 8, 9, 0, 0, 0, 0, 0, 0, 0, 10}));
}

TEST(BytesTest, HexTableJoinsItsRowsAndChecksTheirOffsets) {
    EXPECT_EQ(hexTable(R"(
        0   00000010  size
        4   6d666864  'mfhd'
    )"),
              u32(16) + text("mfhd"));
    EXPECT_THROW(hexTable("0 00\n2 00 wrong offset"), std::logic_error);
}

TEST(BytesTest, DifferenceNamesTheFirstOffsetThatDiffers) {
    EXPECT_EQ(difference(raw({1, 2}), raw({1, 2})), "");
    EXPECT_NE(difference(raw({1, 2}), raw({1, 3})).find("first difference at 1"),
              std::string::npos);
}

TEST(BytesTest, FindsTheFirstPlaceOfLetters) {
    const Bytes bytes = u32(9) + text("moovmoof") + text("moof");
    EXPECT_EQ(bytes.find("moof"), 8U);
    EXPECT_EQ(bytes.find("moovm"), 4U);
    EXPECT_THROW(bytes.find("mdat"), std::logic_error);
}

}  // namespace
}  // namespace kz::test
