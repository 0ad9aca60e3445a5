#include <algorithm>
#include <limits>
#include <stdexcept>
#include <utility>

#include <gtest/gtest.h>

#include "flv/Exception.h"
#include "kzspkgutil/FLVSurvey.h"
#include "support/FlvBuilder.h"

namespace torvo::kzspkgutil {
namespace {

using kz::test::avcConfig;
using kz::test::Bytes;
using kz::test::fill;
using kz::test::flvFile;
using kz::test::mp3Frame;
using kz::test::pattern;
using kz::test::raw;

/// The library reads blocks of that size.
constexpr std::uint64_t kBlock = 256 * 1024;

/// A file of which one block can't be read.
class DefectiveStream : public flv::InputStream {
public:
    DefectiveStream(Bytes content, std::uint64_t defectiveBlock)
        : content_(std::move(content)), defectiveBlock_(defectiveBlock) {}

    void addRef() override {}
    void release() override {}
    std::uint32_t read(void* buffer, std::uint32_t size) override {
        if (position_ / kBlock == defectiveBlock_) throw std::runtime_error("read");
        const std::size_t count = std::min<std::size_t>(size, content_.size() - position_);
        std::copy_n(content_.data() + position_, count, static_cast<std::uint8_t*>(buffer));
        position_ += count;
        return static_cast<std::uint32_t>(count);
    }
    void seek(std::int64_t offset, std::uint32_t whence) override {
        position_ = (whence == 2 ? content_.size() : 0) + static_cast<std::size_t>(offset);
    }
    std::int64_t tell() override { return static_cast<std::int64_t>(position_); }
    void open() override {}
    void close() override {}

private:
    Bytes content_;
    std::uint64_t defectiveBlock_;
    std::size_t position_ = 0;
};

FLVSurvey surveyOf(const Bytes& content, std::uint64_t defectiveBlock) {
    DefectiveStream stream(content, defectiveBlock);
    flv::Allocator allocator;
    return surveyFLV(flv::Reader(stream, allocator));
}

constexpr std::uint64_t kNoBlock = std::numeric_limits<std::uint64_t>::max();

/// Four tags in the first block, the next block full of a fifth, and the last one behind it.
Bytes threeBlocks() {
    return flvFile({avcConfig(0), mp3Frame(26, raw({1})), mp3Frame(52, raw({1})),
                    mp3Frame(78, raw({1})), mp3Frame(104, pattern(2 * kBlock, 1)),
                    mp3Frame(130, raw({1}))});
}

/// The same without video, so that the kinds are looked for to the end.
Bytes threeBlocksOfAudio() {
    return flvFile({mp3Frame(0, raw({1})), mp3Frame(26, raw({1})), mp3Frame(52, raw({1})),
                    mp3Frame(78, pattern(2 * kBlock, 1)), mp3Frame(104, raw({1}))});
}

TEST(FLVSurveyTest, FindsTheLastTagOfASoundFileWithoutItsMiddle) {
    const FLVSurvey found = surveyOf(threeBlocks(), 1);
    EXPECT_EQ(found.durationMs, 130U);
    EXPECT_TRUE(found.hasAudio);
    EXPECT_TRUE(found.hasVideo);
}

TEST(FLVSurveyTest, KeepsTheTagItLookedAtLastWhenTheEndCannotBeRead) {
    const FLVSurvey found = surveyOf(threeBlocks(), 2);
    EXPECT_EQ(found.durationMs, 26U);  // the first tag behind time 0 ended the search for a size
    EXPECT_TRUE(found.hasAudio);
    EXPECT_TRUE(found.hasVideo);
}

TEST(FLVSurveyTest, KnowsNoKindsWhenTheWalkForThemFails) {
    EXPECT_TRUE(surveyOf(threeBlocksOfAudio(), kNoBlock).hasAudio);
    const FLVSurvey found = surveyOf(threeBlocksOfAudio(), 2);
    EXPECT_FALSE(found.hasAudio);
    EXPECT_FALSE(found.hasVideo);
    EXPECT_EQ(found.durationMs, 26U);
}

TEST(FLVSurveyTest, FailsWhenTheForwardWalkToTheLastTagCannotReadTheFile) {
    const Bytes whole = flvFile({avcConfig(0), mp3Frame(26, pattern(kBlock, 1)),
                                 mp3Frame(52, pattern(kBlock, 1)), mp3Frame(78, fill(4, 0xFF))});
    // Without the last size word the file can't be walked backward: it ends in ff ff ff ff.
    const Bytes content = whole.cutTo(whole.size() - 4);
    EXPECT_EQ(surveyOf(content, kNoBlock).durationMs, 78U);
    try {
        surveyOf(content, 1);
        FAIL() << "the tag ahead of the defect was taken for the last one";
    } catch (const flv::Exception& failure) {
        EXPECT_EQ(failure.code(), flv::Exception::kStreamFailed);
    }
}

}  // namespace
}  // namespace torvo::kzspkgutil
