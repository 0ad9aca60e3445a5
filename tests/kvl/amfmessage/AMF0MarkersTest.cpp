#include <limits>

#include <gtest/gtest.h>

#include "kvl/amfmessage/AMF0Markers.h"
#include "kvl/amfmessage/Items.h"

using namespace kvl::amfmessage;
using namespace kz::test;

TEST(AMF0ObjectBeginTest, IsTheByte3) { EXPECT_EQ(written(AMF0ObjectBegin()), hex("03")); }

TEST(AMF0ObjectBeginTest, ReadsItsMarkerOnly) {
    AMF0ObjectBegin item;
    EXPECT_EQ(readFrom(hex("03 aa"), item), 1U);
    EXPECT_THROW(readFrom(hex("08"), item), ParseException);
}

TEST(AMF0ObjectEndTest, IsAnEmptyNameAndTheByte9) {
    EXPECT_EQ(written(AMF0ObjectEnd()), hex("00 00 09"));
}

TEST(AMF0ObjectEndTest, ReadsPastAnyName) {
    AMF0ObjectEnd item;
    EXPECT_EQ(readFrom(hex("0000 09"), item), 3U);
    EXPECT_EQ(readFrom(hex("0002 6162 09 ff"), item), 5U);
}

TEST(AMF0ObjectEndTest, RefusesAnotherByteBehindTheName) {
    AMF0ObjectEnd item;
    EXPECT_THROW(readFrom(hex("0000 03"), item), ParseException);
}

TEST(AMF0ArrayBeginTest, IsTheByte8AndACountOfZero) {
    EXPECT_EQ(written(AMF0ArrayBegin()), hex("08 00000000"));
}

TEST(AMF0ArrayBeginTest, ReadsACountOfZero) {
    AMF0ArrayBegin item;
    EXPECT_EQ(readFrom(hex("08 00000000 00"), item), 5U);
}

TEST(AMF0ArrayBeginTest, RefusesACountOtherThanZero) {
    AMF0ArrayBegin item;
    EXPECT_THROW(readFrom(hex("08 00000001"), item), ParseException);
}

TEST(AMF0ArrayBeginTest, RefusesAnotherMarker) {
    AMF0ArrayBegin item;
    EXPECT_THROW(readFrom(hex("0a 00000000"), item), ParseException);
}

TEST(AMF0ArrayEndTest, HasTheBytesOfAnObjectEnd) {
    AMF0ArrayEnd item;
    EXPECT_EQ(written(item), hex("00 00 09"));
    EXPECT_EQ(readFrom(hex("0001 61 09 00"), item), 4U);
    EXPECT_THROW(readFrom(hex("0000 08"), item), ParseException);
}

TEST(AMF0StrictArrayBeginTest, WritesTheCount) {
    EXPECT_EQ(written(AMF0StrictArrayBegin(3)), hex("0a 00000003"));
    EXPECT_EQ(written(AMF0StrictArrayBegin(4294967295.0)), hex("0a ffffffff"));
}

TEST(AMF0StrictArrayBeginTest, TruncatesAFractionWhenWriting) {
    EXPECT_EQ(written(AMF0StrictArrayBegin(2.9)), hex("0a 00000002"));
}

TEST(AMF0StrictArrayBeginTest, WritesTheLow32BitsOfACountThatDoesNotFit) {
    EXPECT_EQ(written(AMF0StrictArrayBegin(4294967298.0)), hex("0a 00000002"));
    EXPECT_EQ(written(AMF0StrictArrayBegin(-1.0)), hex("0a ffffffff"));
}

TEST(AMF0StrictArrayBeginTest, WritesZeroForWhatIsNoNumber) {
    EXPECT_EQ(written(AMF0StrictArrayBegin(std::numeric_limits<double>::quiet_NaN())),
              hex("0a 00000000"));
    EXPECT_EQ(written(AMF0StrictArrayBegin(1e30)), hex("0a 00000000"));
}

TEST(AMF0StrictArrayBeginTest, KeepsTheCountItReads) {
    AMF0StrictArrayBegin item;
    EXPECT_EQ(readFrom(hex("0a 80000001 00"), item), 5U);
    EXPECT_EQ(item.count, 2147483649.0);
    EXPECT_THROW(readFrom(hex("08 00000001"), item), ParseException);
}
