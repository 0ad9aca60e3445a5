#include <gtest/gtest.h>

#include "kvl/amfmessage/AMF0Values.h"
#include "kvl/amfmessage/Items.h"

using namespace kvl::amfmessage;
using namespace kz::test;

TEST(AMF0NumberTest, IsTheByte0AndABigEndianDouble) {
    EXPECT_EQ(written(AMF0Number(1.0)), hex("00 3ff0000000000000"));
    EXPECT_EQ(written(AMF0Number(-2.5)), hex("00 c004000000000000"));
}

TEST(AMF0NumberTest, ReadsItsMarkerAndTheDouble) {
    AMF0Number item;
    EXPECT_EQ(readFrom(hex("00 4059000000000000 00"), item), 9U);
    EXPECT_EQ(item.value, 100.0);
    EXPECT_THROW(readFrom(hex("02 4059000000000000"), item), ParseException);
}

TEST(AMF0StringTest, HasAMarkerAndA16BitLength) {
    EXPECT_EQ(written(AMF0String("abc")), hex("02 0003 616263"));
    EXPECT_EQ(written(AMF0String("")), hex("02 0000"));
}

TEST(AMF0StringTest, UsesTheShortFormUpTo65535Bytes) {
    const Bytes bytes = written(AMF0String(std::string(65535, 'x')));
    EXPECT_EQ(bytes.size(), 3U + 65535U);
    EXPECT_EQ(bytes.cutTo(4), hex("02 ffff 78"));
}

TEST(AMF0StringTest, UsesTheLongFormFrom65536BytesOn) {
    const Bytes bytes = written(AMF0String(std::string(65536, 'x')));
    EXPECT_EQ(bytes.size(), 5U + 65536U);
    EXPECT_EQ(bytes.cutTo(6), hex("0c 00010000 78"));
}

TEST(AMF0StringTest, ReadsBothForms) {
    AMF0String item;
    EXPECT_EQ(readFrom(hex("02 0002 6869 00"), item), 5U);
    EXPECT_EQ(item.value, "hi");
    EXPECT_EQ(readFrom(hex("0c 00000003 616263 00"), item), 8U);
    EXPECT_EQ(item.value, "abc");
}

TEST(AMF0StringTest, ReadsTheLongestShortAndTheShortestLongString) {
    for (const std::size_t size : {65535U, 65536U, 200000U}) {
        const std::string value(size, 'y');
        AMF0String item;
        readFrom(written(AMF0String(value)), item);
        EXPECT_EQ(item.value, value) << size;
    }
}

TEST(AMF0StringTest, RefusesAnyOtherMarker) {
    AMF0String item;
    for (const int marker : {0x00, 0x01, 0x03, 0x08, 0x0A, 0x0B, 0x0D, 0xFF}) {
        EXPECT_THROW(readFrom(raw({marker}) + hex("0000"), item), ParseException) << marker;
    }
}

TEST(AMF0StringTest, KeepsWhatArrivedWhenALongLengthLies) {
    AMF0String item;
    readFrom(hex("0c ffffffff 616263"), item);
    EXPECT_EQ(item.value, "abc");
}

TEST(AMF0StringTest, LeavesAShortReadToTheStreamsExceptionSetting) {
    std::istringstream stream(hex("02 0005 6162").str());
    stream.exceptions(std::ios::eofbit | std::ios::failbit | std::ios::badbit);
    AMF0String item;
    EXPECT_THROW(item.read(stream), std::ios_base::failure);
}

TEST(AMF0NoHeaderStringTest, HasNoMarker) {
    EXPECT_EQ(written(AMF0NoHeaderString("ab")), hex("0002 6162"));
    AMF0NoHeaderString item;
    EXPECT_EQ(readFrom(hex("0003 616263 00"), item), 5U);
    EXPECT_EQ(item.value, "abc");
}

TEST(AMF0NoHeaderStringTest, Writes65535Bytes) {
    const Bytes bytes = written(AMF0NoHeaderString(std::string(65535, 'n')));
    EXPECT_EQ(bytes.size(), 2U + 65535U);
    EXPECT_EQ(bytes.cutTo(3), hex("ffff 6e"));
}

TEST(AMF0NoHeaderStringTest, RefusesToWrite65536BytesAndWritesNothing) {
    std::ostringstream stream;
    EXPECT_THROW(AMF0NoHeaderString(std::string(65536, 'n')).write(stream), WriteException);
    EXPECT_EQ(stream.str(), "");
}
