#include <random>

#include <gtest/gtest.h>

#include "qlix_flv/FlvFixture.h"
#include "support/FlvBuilder.h"

namespace kz::test {
namespace {

constexpr std::size_t kMebibyte = 1024 * 1024;

/// Bodies that differ everywhere, so that a byte from the wrong place shows.
Bytes body(std::size_t size, unsigned seed) {
    std::minstd_rand random(seed + 1);
    Bytes out(size);
    for (std::uint8_t& byte : out) byte = static_cast<std::uint8_t>(random() >> 8);
    return out;
}

void expectAllCopied(const std::vector<FlvTag>& tags, FlvFixture& file) {
    file.open();
    const Drained drained = drain(file.ordered());
    EXPECT_EQ(drained.result, 0U);
    ASSERT_EQ(drained.bytes.size(), tags.size());
    for (std::size_t i = 0; i < tags.size(); ++i) {
        EXPECT_EQ(difference(drained.bytes[i], tags[i].headerAndBody()), "") << "tag " << i;
    }
}

TEST(ReadAheadTest, SmallTagsInOrderCostNoSeeksAndFewReads) {
    std::vector<FlvTag> tags;
    for (unsigned i = 0; i < 60; ++i) {
        tags.push_back(avcFrame(i * 40, true, body(30000, i)));
        tags.push_back(mp3Frame(i * 40, body(400, i)));
    }
    const Bytes content = flvFile(tags);
    FlvFixture file(content);
    expectAllCopied(tags, file);
    EXPECT_LE(file.stream.seeks, 2);
    EXPECT_EQ(file.stream.bytesRead, content.size());
    EXPECT_LE(static_cast<std::size_t>(file.stream.reads), content.size() / (kMebibyte / 4) + 1);
}

TEST(ReadAheadTest, BodiesOfSomeBlocksAreReadOnceInPassing) {
    std::vector<FlvTag> tags;
    for (unsigned i = 0; i < 12; ++i) {
        tags.push_back(avcFrame(i * 40, true, body(500000, i)));
        tags.push_back(mp3Frame(i * 40, body(400, i)));
    }
    const Bytes content = flvFile(tags);
    FlvFixture file(content);
    expectAllCopied(tags, file);
    EXPECT_EQ(file.stream.bytesRead, content.size());
    EXPECT_LE(file.stream.seeks, 2);
}

TEST(ReadAheadTest, LargeBodiesGoStraightToTheBufferOfTheCaller) {
    const std::vector<FlvTag> tags{avcFrame(0, true, body(5 * kMebibyte, 1)),
                                   avcFrame(40, false, body(5 * kMebibyte, 2))};
    const Bytes content = flvFile(tags, 1);
    FlvFixture file(content);
    file.open();
    const std::uint8_t video = 9;
    QlixFLVTagIterator* iterator = nullptr;
    QlixFLVReaderGetTagsByTagTypes(file.reader, FlvFixture::kFirstTime, FlvFixture::kLastTime, 0,
                                   &video, 1, &iterator);
    const Drained drained = drain(iterator);
    ASSERT_EQ(drained.bytes.size(), 2U);
    EXPECT_EQ(difference(drained.bytes[0], tags[0].headerAndBody()), "");
    EXPECT_EQ(difference(drained.bytes[1], tags[1].headerAndBody()), "");
    EXPECT_EQ(file.stream.bytesRead, content.size());
    EXPECT_LE(file.stream.reads, 8);
    EXPECT_LE(file.allocator.peakBytes, kMebibyte + 20000);
}

TEST(ReadAheadTest, CopiesAreRightWhateverTheSizesAndTheOrder) {
    for (unsigned seed = 1; seed <= 12; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        std::mt19937 random(seed);
        std::vector<FlvTag> tags;
        for (unsigned i = 0; i < 14; ++i) {
            const std::size_t size = random() % 3 == 0 ? random() % 1500000 : random() % 3000;
            tags.push_back(random() % 2 == 0 ? avcFrame(i, true, body(size, i))
                                             : mp3Frame(i, body(size, i)));
        }
        FlvFixture file(flvFile(tags));
        expectAllCopied(tags, file);
        EXPECT_LE(file.allocator.peakBytes, kMebibyte + 100000);
    }
}

TEST(ReadAheadTest, TheEndOfAFileOnTheEdgeOfABlockIsNotPassed) {
    // 13 bytes of file header, 11 + 1 + 4 around the data, and the block size in all.
    for (const std::size_t around : {0U, 1U, 2U}) {
        const std::vector<FlvTag> tags{mp3Frame(0, body(256 * 1024 - 30 + around, 1))};
        FlvFixture file(flvFile(tags));
        expectAllCopied(tags, file);
    }
}

TEST(ReadAheadTest, MemoryDoesNotGrowWithTheFileWhenOneKindOfTagEndsEarly) {
    std::vector<FlvTag> tags{mp3Frame(0, raw({1}))};
    for (unsigned i = 1; i < 5000; ++i) tags.push_back(avcFrame(i, true, body(1500, i)));
    FlvFixture file(flvFile(tags));
    expectAllCopied(tags, file);
    EXPECT_LE(file.allocator.peakBytes, kMebibyte + 200000);
}

}  // namespace
}  // namespace kz::test
