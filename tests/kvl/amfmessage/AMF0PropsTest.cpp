#include <gtest/gtest.h>

#include "kvl/amfmessage/AMF0Props.h"
#include "kvl/amfmessage/Items.h"

using namespace kvl::amfmessage;
using namespace kz::test;

TEST(AMF0PropObjectBeginTest, IsTheNameAndTheObjectMarker) {
    EXPECT_EQ(written(AMF0PropObjectBegin("ab")), hex("0002 6162 03"));
    AMF0PropObjectBegin item;
    EXPECT_EQ(readFrom(hex("0001 7a 03 00"), item), 4U);
    EXPECT_EQ(item.name, "z");
    EXPECT_THROW(readFrom(hex("0001 7a 00"), item), ParseException);
}

TEST(AMF0PropNumberTest, IsTheNameAndTheNumber) {
    EXPECT_EQ(written(AMF0PropNumber("w", 2.0)), hex("0001 77 00 4000000000000000"));
    AMF0PropNumber item;
    EXPECT_EQ(readFrom(hex("0001 68 00 3ff0000000000000 00"), item), 12U);
    EXPECT_EQ(item.name, "h");
    EXPECT_EQ(item.value, 1.0);
    EXPECT_THROW(readFrom(hex("0001 68 02 0000"), item), ParseException);
}

TEST(AMF0PropStringTest, IsTheNameAndTheString) {
    EXPECT_EQ(written(AMF0PropString("k", "vw")), hex("0001 6b 02 0002 7677"));
    AMF0PropString item;
    EXPECT_EQ(readFrom(hex("0002 6b6b 0c 00000001 76 00"), item), 10U);
    EXPECT_EQ(item.name, "kk");
    EXPECT_EQ(item.value, "v");
    EXPECT_THROW(readFrom(hex("0001 6b 00 0000000000000000"), item), ParseException);
}

TEST(AMF0PropStringTest, WritesALongValueBehindAShortName) {
    const Bytes bytes = written(AMF0PropString("k", std::string(65536, 'v')));
    EXPECT_EQ(bytes.cutTo(9), hex("0001 6b 0c 00010000 76"));
}

TEST(AMF0PropBaseTest, RefusesANameOf65536BytesBeforeWritingAnything) {
    const std::string name(65536, 'n');
    std::ostringstream stream;
    EXPECT_THROW(AMF0PropObjectBegin(name).write(stream), WriteException);
    EXPECT_THROW(AMF0PropNumber(name, 1.0).write(stream), WriteException);
    EXPECT_THROW(AMF0PropString(name, "v").write(stream), WriteException);
    EXPECT_EQ(stream.str(), "");
}
