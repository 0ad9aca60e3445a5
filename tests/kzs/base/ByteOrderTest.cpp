#include <gtest/gtest.h>

#include "kzs/base/ByteOrder.h"
#include "support/Bytes.h"

namespace torvo::kzs {
namespace {

using kz::test::Bytes;
using kz::test::fill;
using kz::test::hex;

TEST(ByteOrderTest, LoadsTheHighByteFirst) {
    const Bytes bytes = hex("80 01 02 fe ff 7f 00 81");
    EXPECT_EQ(loadU16(bytes.data()), 0x8001);
    EXPECT_EQ(loadU24(bytes.data()), 0x800102U);
    EXPECT_EQ(loadU32(bytes.data()), 0x800102FEU);
    EXPECT_EQ(loadU64(bytes.data()), 0x800102FEFF7F0081U);
}

TEST(ByteOrderTest, StoresTheHighByteFirstAndNothingBeside) {
    Bytes bytes = fill(10, 0xee);
    storeU16(bytes.data() + 1, 0x8001);
    EXPECT_EQ(bytes, hex("ee 80 01 ee ee ee ee ee ee ee"));
    storeU24(bytes.data() + 1, 0xFF123456);
    EXPECT_EQ(bytes, hex("ee 12 34 56 ee ee ee ee ee ee"));
    storeU32(bytes.data() + 1, 0xFEDCBA98);
    EXPECT_EQ(bytes, hex("ee fe dc ba 98 ee ee ee ee ee"));
    storeU64(bytes.data() + 1, 0x0102030405060708);
    EXPECT_EQ(bytes, hex("ee 01 02 03 04 05 06 07 08 ee"));
}

TEST(ByteOrderTest, CutsToTheLowHalf) { EXPECT_EQ(low32(0x1234567887654321), 0x87654321U); }

TEST(ByteOrderTest, PutsTheFirstLetterOfACodeInTheHighByte) {
    EXPECT_EQ(fourCc("moof"), 0x6D6F6F66U);
    EXPECT_EQ(fourCc("\xa9nam"), 0xA96E616DU);
}

}  // namespace
}  // namespace torvo::kzs
