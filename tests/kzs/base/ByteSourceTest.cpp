#include <istream>
#include <limits>

#include <gtest/gtest.h>

#include "kzs/base/BoxFunctions.h"
#include "kzs/base/ByteSource.h"
#include "kzs/base/IStream.h"
#include "support/Bytes.h"

namespace torvo::kzs {
namespace {

using kz::test::Bytes;
using kz::test::hex;
using kz::test::pattern;
using kz::test::text;

TEST(ByteSourceTest, ReturnsTheRequestedCount) {
    const Bytes block = pattern(10, 1);
    ByteSource source(block);
    char buffer[100] = {};
    EXPECT_EQ(source.read(buffer, 100), 100);
    EXPECT_EQ(kz::test::bytesOf(buffer, 10), block);
    EXPECT_EQ(buffer[10], 0);
    EXPECT_EQ(source.position(), 10U);
    EXPECT_EQ(source.read(buffer, 100), -1);
}

TEST(ByteSourceTest, IsAtItsEndAtOnceWhenTheBlockIsEmpty) {
    const std::vector<std::uint8_t> block;
    ByteSource source(block);
    char buffer[1];
    EXPECT_EQ(source.read(buffer, 1), -1);
}

TEST(ByteSourceTest, SeeksBackFromTheEndByPositiveOffsets) {
    const Bytes block = pattern(10, 1);
    ByteSource source(block);
    EXPECT_EQ(source.seek(3, kFromEnd), 7U);
    EXPECT_EQ(source.seek(0, kFromEnd), 10U);
    EXPECT_EQ(source.seek(10, kFromEnd), 0U);
}

TEST(ByteSourceTest, StopsAtTheStartWhenTheEndIsNearerThanTheOffset) {
    const Bytes block = pattern(3, 1);
    ByteSource source(block);
    source.seek(2, kFromStart);
    EXPECT_EQ(source.seek(5, kFromEnd), 0U);
}

TEST(ByteSourceTest, StopsAtItsEdges) {
    constexpr auto kFar = std::numeric_limits<std::int64_t>::max();
    const Bytes block = pattern(10, 1);
    ByteSource source(block);
    EXPECT_EQ(source.seek(11, kFromStart), 10U);
    EXPECT_EQ(source.seek(-1, kFromStart), 0U);
    EXPECT_EQ(source.seek(2, kFromCurrent), 2U);
    EXPECT_EQ(source.seek(-5, kFromCurrent), 0U);
    EXPECT_EQ(source.seek(4, kFromCurrent), 4U);
    EXPECT_EQ(source.seek(-3, kFromCurrent), 1U);
    EXPECT_EQ(source.seek(kFar, kFromCurrent), 10U);
    EXPECT_EQ(source.seek(-kFar - 1, kFromCurrent), 0U);
    EXPECT_EQ(source.seek(-5, kFromEnd), 10U);
    EXPECT_EQ(source.seek(kFar, kFromEnd), 0U);
}

TEST(ByteSourceStreamTest, EndsWhereTheBlockEnds) {
    const Bytes block = pattern(10, 1);
    ByteSourceStream stream(block);
    char buffer[100];
    stream.read(buffer, 100);
    EXPECT_TRUE(stream.eof());
    EXPECT_EQ(stream.gcount(), 10);
    EXPECT_EQ(kz::test::bytesOf(buffer, 10), block);
}

TEST(ByteSourceStreamTest, TellsAndSeeksInTheBlock) {
    const Bytes block = pattern(13, 1);
    ByteSourceStream stream(block);
    readU64(stream);
    EXPECT_EQ(stream.tellg(), std::streampos(8));
    stream.seekg(-3, std::ios::cur);
    EXPECT_EQ(readByte(stream), block[5]);
    stream.seekg(-2, std::ios::end);
    EXPECT_EQ(readByte(stream), block[11]);
    stream.seekg(1);
    EXPECT_EQ(readByte(stream), block[1]);
}

TEST(ByteSourceStreamTest, DeliversNoStaleBytesOfThePageBefore) {
    // One page of the buffer is full of 'q', the second has 10 bytes.
    const Bytes block = kz::test::fill(4096, 'q') + text("0123456789");
    ByteSourceStream stream(block);
    std::string all;
    for (char c = 0; stream.get(c);) all.push_back(c);
    EXPECT_EQ(all.size(), 4106U);
    EXPECT_EQ(all.substr(4096), "0123456789");
}

}  // namespace
}  // namespace torvo::kzs
