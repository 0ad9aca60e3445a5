#include <algorithm>
#include <cstring>
#include <stdexcept>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "flv/Exception.h"
#include "flv/Reader.h"
#include "flv/ScriptDataIterator.h"
#include "support/AmfBuilder.h"
#include "support/FlvBuilder.h"

namespace {

bool isLibrarySilent = false;

}  // namespace

// The linker's names for the library's function and for what stands in front of it here.
// NOLINTBEGIN(bugprone-reserved-identifier)
extern "C" std::uint32_t __real_QlixFLVDocIsFLV(const QlixFLVInputStreamCallBacks* input,
                                                const QlixFLVAllocatorCallBacks* allocator,
                                                std::int32_t* isFLV);

/// Succeeds without an answer where the library is to be silent.
extern "C" std::uint32_t __wrap_QlixFLVDocIsFLV(const QlixFLVInputStreamCallBacks* input,
                                                const QlixFLVAllocatorCallBacks* allocator,
                                                std::int32_t* isFLV) {
    return isLibrarySilent ? 0 : __real_QlixFLVDocIsFLV(input, allocator, isFLV);
}
// NOLINTEND(bugprone-reserved-identifier)

namespace flv {
namespace {

using kz::test::amfEcmaArray;
using kz::test::amfNumber;
using kz::test::amfString;
using kz::test::avcFrame;
using kz::test::Bytes;
using kz::test::flvFile;
using kz::test::FlvTag;
using kz::test::mp3Frame;
using kz::test::raw;
using kz::test::scriptTag;
using ::testing::ElementsAre;

class BytesStream : public InputStream {
public:
    explicit BytesStream(Bytes content) : content_(std::move(content)) {}

    void addRef() override { ++references; }
    void release() override { --references; }
    std::uint32_t read(void* buffer, std::uint32_t size) override {
        if (fails) throw std::runtime_error("read");
        const auto count =
            static_cast<std::uint32_t>(std::min<std::size_t>(size, content_.size() - position_));
        if (count > 0) std::memcpy(buffer, content_.data() + position_, count);
        position_ += count;
        return count;
    }
    void seek(std::int64_t offset, std::uint32_t whence) override {
        if (fails) throw std::runtime_error("seek");
        position_ = (whence == 2 ? content_.size() : 0) + static_cast<std::size_t>(offset);
    }
    std::int64_t tell() override {
        if (fails) throw std::runtime_error("tell");
        return static_cast<std::int64_t>(position_);
    }
    void open() override {}
    void close() override {}

    int references = 0;
    bool fails = false;

private:
    Bytes content_;
    std::size_t position_ = 0;
};

class NoMemory : public Allocator {
public:
    void* allocate(std::size_t) override { throw std::bad_alloc(); }
};

template <class Work>
std::uint32_t codeOf(const Work& work) {
    try {
        work();
    } catch (const Exception& failure) {
        return failure.code();
    }
    return 0;
}

std::vector<std::int32_t> timesOf(TagIterator tags) {
    std::vector<std::int32_t> out;
    while (tags.hasNext()) out.push_back(tags.next().getInfo().timestamp);
    return out;
}

TEST(ExceptionTest, CarriesTheCodeAndIsAStandardException) {
    const Exception failure(8);
    EXPECT_EQ(failure.code(), 8U);
    const std::exception& base = failure;
    EXPECT_STREQ(base.what(), "flv::Exception");
    EXPECT_NO_THROW(check(0));
    EXPECT_EQ(codeOf([] { check(77); }), 77U);
}

TEST(ReaderTest, WalksForwardBackwardAndByTypes) {
    BytesStream stream(flvFile(
        {avcFrame(40, true, raw({1})), mp3Frame(0, raw({1})), scriptTag(50, amfString("x"))}));
    Allocator allocator;
    EXPECT_TRUE(Reader::isFLV(stream, allocator));
    const Reader reader(stream, allocator);
    EXPECT_THAT(timesOf(reader.getTags(Direction::forward)), ElementsAre(40, 0, 50));
    EXPECT_THAT(timesOf(reader.getTags(Direction::backward)), ElementsAre(50, 0, 40));
    TagFilter filter;
    filter.add(9);
    filter.add(8);
    EXPECT_THAT(filter.types(), ElementsAre(9, 8));
    EXPECT_THAT(timesOf(reader.getTagsByTagTypes(filter)), ElementsAre(0, 40));
    EXPECT_EQ(reader.getDocInfo().hasAudio, 1U);
}

TEST(ReaderTest, AnotherKindOfContentIsNoFailureUntilItIsOpened) {
    BytesStream stream(kz::test::text("something else"));
    Allocator allocator;
    EXPECT_FALSE(Reader::isFLV(stream, allocator));
    EXPECT_EQ(codeOf([&] { Reader(stream, allocator); }), 4U);
}

TEST(ReaderTest, TakesAFileForFLVUnlessTheLibrarySaysNo) {
    BytesStream stream(kz::test::text("something else"));
    Allocator allocator;
    isLibrarySilent = true;
    EXPECT_TRUE(Reader::isFLV(stream, allocator));
    isLibrarySilent = false;
    EXPECT_FALSE(Reader::isFLV(stream, allocator));
}

TEST(ReaderTest, WhatTheStreamThrowsBecomesTheLibrarysCode) {
    BytesStream stream(flvFile({mp3Frame(0, raw({1}))}));
    Allocator allocator;
    const Reader reader(stream, allocator);
    stream.fails = true;
    EXPECT_EQ(codeOf([&] { Reader::isFLV(stream, allocator); }), 5U);
    QlixFLVInputStreamCallBacks callBacks;
    stream.getCallBacks(callBacks);
    std::uint32_t count = 0;
    std::int64_t position = 0;
    std::uint8_t byte = 0;
    EXPECT_EQ(callBacks.read(callBacks.context, &byte, 1, &count), 1U);
    EXPECT_EQ(callBacks.seek(callBacks.context, 0, 0), 1U);
    EXPECT_EQ(callBacks.tell(callBacks.context, &position), 1U);
    stream.fails = false;
    EXPECT_EQ(callBacks.read(callBacks.context, &byte, 1, nullptr), 0U);
    EXPECT_EQ(callBacks.tell(callBacks.context, nullptr), 0U);
}

TEST(ReaderTest, WithoutMemoryItFails) {
    BytesStream stream(flvFile({}));
    NoMemory allocator;
    EXPECT_EQ(codeOf([&] { Reader(stream, allocator); }), 3U);
}

TEST(ReaderTest, CopiesOfAHandleReleaseItOnce) {
    BytesStream stream(flvFile({mp3Frame(0, raw({1}))}));
    Allocator allocator;
    Tag kept;
    {
        const Reader reader(stream, allocator);
        const Reader copy = reader;
        TagIterator tags = copy.getTags(Direction::forward);
        const Tag tag = tags.next();
        kept = tag;
        EXPECT_EQ(stream.references, 1);
    }
    EXPECT_EQ(stream.references, 1);
    EXPECT_EQ(kept.getLength(), 13U);
    kept = Tag();
    EXPECT_EQ(stream.references, 0);
}

TEST(TagTest, NullHandlesAreLegalAndAnswerWithACode) {
    EXPECT_EQ(codeOf([] { Tag().getInfo(); }), 1U);
    EXPECT_EQ(codeOf([] { TagIterator().hasNext(); }), 1U);
    EXPECT_EQ(codeOf([] { TagIterator().next(); }), 1U);
    EXPECT_EQ(codeOf([] { Reader().getDocInfo(); }), 1U);
    EXPECT_EQ(codeOf([] { ScriptData().getName(); }), 1U);
    EXPECT_EQ(codeOf([] { ScriptDataIterator().next(); }), 1U);
    EXPECT_EQ(codeOf([] { ScriptDataString().getLength(); }), 1U);
}

TEST(TagTest, TellsItsCodecAndCopiesItsBytes) {
    const FlvTag video = avcFrame(40, false, raw({1, 2}));
    const FlvTag audio = mp3Frame(41, raw({3}));
    BytesStream stream(flvFile({video, audio}));
    Allocator allocator;
    const Reader reader(stream, allocator);
    TagIterator tags = reader.getTags(Direction::forward);
    const Tag first = tags.next();
    EXPECT_EQ(first.getVideoInfo().codecId, 7U);
    Bytes bytes(first.getLength());
    EXPECT_EQ(first.copyHeaderAndData(bytes.data(), first.getLength()), 18U);
    EXPECT_EQ(bytes, video.headerAndBody());
    EXPECT_EQ(tags.next().getAudioInfo().soundFormat, 2U);
    EXPECT_EQ(codeOf([&] { tags.next(); }), 6U);
}

TEST(ScriptDataTest, LeadsFromTheEventToItsMembers) {
    BytesStream stream(flvFile(
        {scriptTag(0, amfString("onMetaData") +
                          amfEcmaArray({{"width", amfNumber(320)}, {"name", amfString("x")}}))}));
    Allocator allocator;
    const Reader reader(stream, allocator);
    const ScriptData root = reader.getTags(Direction::forward).next().getScriptData();
    EXPECT_EQ(root.getName().getText(), "onMetaData");
    ScriptDataIterator members = root.getIterator();
    const ScriptData width = members.next();
    EXPECT_EQ(width.getName().getLength(), 5U);
    EXPECT_EQ(width.getNumber(), 320.0);
    EXPECT_EQ(codeOf([&] { members.next().getNumber(); }), 7U);
    EXPECT_FALSE(members.hasNext());
}

}  // namespace
}  // namespace flv
