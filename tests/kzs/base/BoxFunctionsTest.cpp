#include <sstream>

#include <gtest/gtest.h>

#include "kzs/base/BoxFunctions.h"
#include "kzs/base/ByteOrder.h"
#include "kzs/base/ByteSource.h"
#include "support/Bytes.h"

namespace torvo::kzs {
namespace {

using kz::test::Bytes;
using kz::test::bytesOf;
using kz::test::hex;
using kz::test::text;
using kz::test::u32;
using kz::test::u64;

StreamBoxHeader headerFrom(const Bytes& bytes, std::uint64_t size = 77) {
    std::istringstream stream(bytes.str());
    StreamBoxHeader header;
    header.size = size;
    readBoxHeader(stream, header);
    return header;
}

Bytes written(const StreamBoxHeader& header) {
    std::ostringstream stream;
    writeBoxHeader(stream, header);
    return bytesOf(stream.str());
}

TEST(BoxFunctionsTest, ReadsASmallHeader) {
    const StreamBoxHeader header = headerFrom(u32(16) + text("abst"));
    EXPECT_EQ(header.size, 16U);
    EXPECT_EQ(header.type, fourCc("abst"));
}

TEST(BoxFunctionsTest, Reads8BytesOfSizeWhereTheSizeFieldIs1) {
    EXPECT_EQ(headerFrom(u32(1) + text("mdat") + u64(0x123456789)).size, 0x123456789U);
}

TEST(BoxFunctionsTest, KeepsTheSizeTheHeaderWasMadeWithWhereTheFieldIs0) {
    const StreamBoxHeader header = headerFrom(u32(0) + text("abst"), 99);
    EXPECT_EQ(header.size, 99U);
    EXPECT_EQ(header.type, fourCc("abst"));
}

TEST(BoxFunctionsTest, ReadsTheExtendedTypeOfAUuid) {
    const Bytes extended = kz::test::pattern(16, 3);
    const StreamBoxHeader header = headerFrom(u32(24) + text("uuid") + extended);
    EXPECT_EQ(bytesOf(header.extendedType.data(), 16), extended);
}

TEST(BoxFunctionsTest, WritesHeadersInTheFormTheirSizeNeeds) {
    StreamBoxHeader header;
    header.type = fourCc("abst");
    header.size = 0xFFFFFFFF;
    EXPECT_EQ(written(header), hex("ffffffff 61627374"));
    header.size = 0x100000000;
    EXPECT_EQ(written(header), hex("00000001 61627374 0000000100000000"));
    header.type = fourCc("uuid");
    header.size = 24;
    header.extendedType[0] = 0xAB;
    header.extendedType[15] = 0xCD;
    EXPECT_EQ(written(header), hex("00000018 75756964 ab000000000000000000000000 0000cd"));
}

TEST(BoxFunctionsTest, ClosesABoxThatDoesNotStartTheStream) {
    std::stringstream stream;
    writeU16(stream, 0x0909);
    StreamBoxHeader header;
    header.type = fourCc("asrt");
    writeBoxHeader(stream, header);
    writeByte(stream, 7);
    closeBox(stream, 2);
    writeByte(stream, 8);
    EXPECT_EQ(bytesOf(stream.str()), hex("0909 00000009 61737274 07 08"));
}

// Remembers what is written where, so that a box of more than 4 GiB needs no memory.
class SparseBuffer : public std::streambuf {
public:
    std::uint64_t position = 0;
    std::vector<std::pair<std::uint64_t, Bytes>> writes;

protected:
    std::streamsize xsputn(const char* bytes, std::streamsize count) override {
        writes.emplace_back(position, bytesOf(bytes, static_cast<std::size_t>(count)));
        position += static_cast<std::uint64_t>(count);
        return count;
    }
    pos_type seekoff(off_type offset, std::ios::seekdir, std::ios::openmode) override {
        return static_cast<off_type>(position) + offset;  // only asked where it stands
    }
    pos_type seekpos(pos_type wanted, std::ios::openmode) override {
        position = static_cast<std::uint64_t>(static_cast<std::streamoff>(wanted));
        return wanted;
    }
};

TEST(BoxFunctionsTest, ClosesALargeBoxWithThreeWrites) {
    SparseBuffer buffer;
    std::ostream stream(&buffer);
    buffer.position = 0x200000010;
    closeBox(stream, 0x10);
    ASSERT_EQ(buffer.writes.size(), 3U);
    EXPECT_EQ(buffer.writes[0], std::make_pair(std::uint64_t{0x10}, u32(1)));
    EXPECT_EQ(buffer.writes[1], std::make_pair(std::uint64_t{0x18}, u64(0x1FFFFFFFC)));
    EXPECT_EQ(buffer.writes[2], std::make_pair(std::uint64_t{0x20}, u32(0)));
    EXPECT_EQ(buffer.position, 0x200000010U);
}

TEST(BoxFunctionsTest, ReadsAndWritesIntegersOfAllWidths) {
    std::stringstream stream;
    writeByte(stream, 0x80);
    writeU16(stream, 0x8182);
    writeU32(stream, 0x83848586);
    writeU64(stream, 0x8788898A8B8C8D8E);
    writeSized(stream, 0x1122334455667788, true);
    writeSized(stream, 0x1122334455667788, false);
    EXPECT_EQ(bytesOf(stream.str()),
              hex("80 8182 83848586 8788898a8b8c8d8e 1122334455667788 55667788"));
    EXPECT_EQ(readByte(stream), 0x80);
    EXPECT_EQ(readU16(stream), 0x8182);
    EXPECT_EQ(readU32(stream), 0x83848586U);
    EXPECT_EQ(readU64(stream), 0x8788898A8B8C8D8EU);
    EXPECT_EQ(readSized(stream, true), 0x1122334455667788U);
    EXPECT_EQ(readSized(stream, false), 0x55667788U);
}

TEST(FindBoxTest, StopsAtTheSizeFieldOfTheBox) {
    std::istringstream stream((text("junk") + u32(16) + text("afra")).str());
    EXPECT_TRUE(findBox(stream, fourCc("afra")));
    EXPECT_EQ(stream.tellg(), std::streampos(4));
}

TEST(FindBoxTest, FindsATypeBehindItsOwnFirstLetter) {
    std::istringstream stream((u32(16) + text("aafra")).str());
    EXPECT_TRUE(findBox(stream, fourCc("afra")));
    EXPECT_EQ(stream.tellg(), std::streampos(1));
}

TEST(FindBoxTest, PassesOverATypeWithNoRoomForASizeBeforeIt) {
    std::istringstream stream((text("afra") + u32(16) + text("afra")).str());
    EXPECT_TRUE(findBox(stream, fourCc("afra")));
    EXPECT_EQ(stream.tellg(), std::streampos(4));

    std::istringstream alone(text("000afra").str());
    EXPECT_FALSE(findBox(alone, fourCc("afra")));
}

TEST(FindBoxTest, StartsWhereTheStreamStands) {
    std::istringstream stream((u32(8) + text("afra") + u32(8) + text("afra")).str());
    stream.seekg(5);
    EXPECT_TRUE(findBox(stream, fourCc("afra")));
    EXPECT_EQ(stream.tellg(), std::streampos(8));
}

TEST(FindBoxTest, AnswersFalseAtTheEndAlsoOnAStreamThatThrows) {
    for (const Bytes& bytes : {Bytes(), text("abc"), text("0000afr")}) {
        std::istringstream stream(bytes.str());
        stream.exceptions(std::ios::eofbit | std::ios::failbit | std::ios::badbit);
        EXPECT_FALSE(findBox(stream, fourCc("afra")));
        EXPECT_EQ(stream.exceptions(), std::ios::eofbit | std::ios::failbit | std::ios::badbit);
    }
}

TEST(FindBoxTest, FindsABoxBeyondTheFirstPageOfAMemoryBlock) {
    const Bytes block = kz::test::fill(5000, 'a') + u32(8) + text("avcC");
    ByteSourceStream stream(block);
    EXPECT_TRUE(findBox(stream, fourCc("avcC")));
    EXPECT_EQ(stream.tellg(), std::streampos(5000));
    EXPECT_EQ(readU32(stream), 8U);
}

}  // namespace
}  // namespace torvo::kzs
