#include <gtest/gtest.h>

#include "qlix_flv/FlvFixture.h"
#include "qlix_flv/UsedFromC.h"
#include "support/AmfBuilder.h"
#include "support/FlvBuilder.h"

namespace kz::test {
namespace {

QlixFLVTag* firstTag(FlvFixture& file) {
    file.open();
    QlixFLVTagIterator* iterator = file.all();
    QlixFLVTag* tag = nullptr;
    QlixFLVTagIteratorGetNextEntry(iterator, &tag);
    QlixFLVReleaseTagIterator(iterator);
    return tag;
}

TEST(QlixFLVInterfaceTest, IsUsableFromC) {
    EXPECT_EQ(askNobodyFromC(), 1U);
    EXPECT_EQ(hasTheLayoutInC(), 1);
}

TEST(QlixFLVInterfaceTest, CallBackRecordsBeginEmpty) {
    const QlixFLVInputStreamCallBacks input;
    EXPECT_EQ(input.context, nullptr);
    EXPECT_EQ(input.tell, nullptr);
    const QlixFLVAllocatorCallBacks allocator;
    EXPECT_EQ(allocator.allocate, nullptr);
    EXPECT_EQ(allocator.free, nullptr);
}

TEST(QlixFLVInterfaceTest, EveryOperationRefusesANullHandle) {
    std::int32_t flag = 7;
    std::uint32_t number = 7;
    double real = 7;
    std::uint8_t byte = 0;
    FLVDocInfo doc{};
    FLVTagInfo info{};
    FLVVideoInfo video{};
    FLVAudioInfo audio{};
    QlixFLVTagIterator* tags = nullptr;
    QlixFLVTag* tag = nullptr;
    QlixFLVScriptData* data = nullptr;
    QlixFLVScriptDataIterator* members = nullptr;
    QlixFLVScriptDataString* string = nullptr;
    const std::vector<std::uint32_t> results{
        QlixFLVCloseReader(nullptr),
        QlixFLVReaderGetDocInfo(nullptr, &doc),
        QlixFLVReaderGetTags(nullptr, 0, 0, 0, &tags),
        QlixFLVReaderGetTagsByTagTypes(nullptr, 0, 0, 0, &byte, 1, &tags),
        QlixFLVTagIteratorHasMoreEntries(nullptr, &flag),
        QlixFLVTagIteratorGetNextEntry(nullptr, &tag),
        QlixFLVReleaseTagIterator(nullptr),
        QlixFLVReleaseTag(nullptr),
        QlixFLVTagGetInfo(nullptr, &info),
        QlixFLVTagGetVideoInfo(nullptr, &video),
        QlixFLVTagGetAudioInfo(nullptr, &audio),
        QlixFLVTagGetLength(nullptr, &number),
        QlixFLVTagCopyHeaderAndData(nullptr, 1, &byte, &number),
        QlixFLVTagGetScriptData(nullptr, &data),
        QlixFLVScriptDataGetName(nullptr, &string),
        QlixFLVScriptDataGetNumber(nullptr, &real),
        QlixFLVScriptDataGetIterator(nullptr, &members),
        QlixFLVScriptDataIteratorHasMoreEntries(nullptr, &flag),
        QlixFLVScriptDataIteratorGetNextEntry(nullptr, &data),
        QlixFLVScriptDataStringGetLength(nullptr, &number),
        QlixFLVScriptDataStringCopyData(nullptr, 1, &byte, &number),
        QlixFLVReleaseScriptData(nullptr),
        QlixFLVReleaseScriptDataIterator(nullptr),
        QlixFLVReleaseScriptDataString(nullptr)};
    for (std::size_t i = 0; i < results.size(); ++i) {
        EXPECT_EQ(results[i], std::uint32_t{kQlixFLVNullHandle}) << "operation " << i;
    }
    EXPECT_EQ(flag, 0);
    EXPECT_EQ(number, 0U);
}

TEST(QlixFLVInterfaceTest, RefusesNullPointersAndMissingCallBacks) {
    FlvFixture file(flvFile({mp3Frame(0, raw({1}))}));
    const QlixFLVInputStreamCallBacks input = file.stream.callBacks();
    const QlixFLVAllocatorCallBacks memory = file.allocator.callBacks();
    std::int32_t flag = 0;
    QlixFLVReader* reader = nullptr;
    EXPECT_EQ(QlixFLVDocIsFLV(nullptr, &memory, &flag), 2U);
    EXPECT_EQ(QlixFLVDocIsFLV(&input, nullptr, &flag), 2U);
    EXPECT_EQ(QlixFLVDocIsFLV(&input, &memory, nullptr), 2U);
    EXPECT_EQ(QlixFLVDocOpenForRead(&input, &memory, nullptr), 2U);
    QlixFLVInputStreamCallBacks lacking[5] = {input, input, input, input, input};
    lacking[0].addRef = nullptr;
    lacking[1].release = nullptr;
    lacking[2].read = nullptr;
    lacking[3].seek = nullptr;
    lacking[4].tell = nullptr;
    for (const QlixFLVInputStreamCallBacks& stream : lacking) {
        EXPECT_EQ(QlixFLVDocOpenForRead(&stream, &memory, &reader), 2U);
    }
    QlixFLVAllocatorCallBacks withoutAllocate = memory;
    withoutAllocate.allocate = nullptr;
    EXPECT_EQ(QlixFLVDocOpenForRead(&input, &withoutAllocate, &reader), 2U);
    QlixFLVAllocatorCallBacks withoutFree = memory;
    withoutFree.free = nullptr;
    EXPECT_EQ(QlixFLVDocOpenForRead(&input, &withoutFree, &reader), 2U);

    QlixFLVTag* tag = firstTag(file);
    std::uint32_t count = 0;
    EXPECT_EQ(QlixFLVTagGetInfo(tag, nullptr), 2U);
    EXPECT_EQ(QlixFLVTagCopyHeaderAndData(tag, 1, nullptr, &count), 2U);
    EXPECT_EQ(QlixFLVReaderGetDocInfo(file.reader, nullptr), 2U);
    QlixFLVTagIterator* tags = nullptr;
    EXPECT_EQ(QlixFLVReaderGetTagsByTagTypes(file.reader, 0, 0, 0, nullptr, 1, &tags), 2U);
    QlixFLVReleaseTag(tag);
}

TEST(QlixFLVInterfaceTest, RefusesADirectionThatIsNeitherForwardNorBackward) {
    FlvFixture file(flvFile({}));
    file.open();
    EXPECT_EQ(file.all(2), nullptr);
    EXPECT_EQ(file.result, 10U);
}

TEST(QlixFLVInterfaceTest, TellsAStreamOfAnotherKindWithoutAnError) {
    struct Case {
        Bytes content;
        std::int32_t isFLV;
    };
    for (const Case& c : {Case{flvHeader(), 1}, Case{flvHeader().cutTo(8), 0}, Case{Bytes(), 0},
                          Case{text("FLX") + raw({1, 5, 0, 0, 0, 9}), 0},
                          Case{flvHeader(5, 9, 2), 0}, Case{flvHeader(0, 9), 1}}) {
        FlvFixture file(c.content);
        const QlixFLVInputStreamCallBacks input = file.stream.callBacks();
        const QlixFLVAllocatorCallBacks memory = file.allocator.callBacks();
        std::int32_t isFLV = 7;
        EXPECT_EQ(QlixFLVDocIsFLV(&input, &memory, &isFLV), 0U);
        EXPECT_EQ(isFLV, c.isFLV);
        EXPECT_EQ(file.stream.references, 0);
        EXPECT_EQ(file.open(), c.isFLV == 1 ? 0U : 4U);
    }
}

TEST(QlixFLVInterfaceTest, TellsTypeTimeAndSizesOfATag) {
    FlvFixture file(flvFile({avcFrame(0x81020304, false, raw({1, 2, 3}))}));
    QlixFLVTag* tag = firstTag(file);
    EXPECT_EQ(seen(tag), (SeenTag{9, static_cast<std::int32_t>(0x81020304), 8}));
    std::uint32_t length = 0;
    EXPECT_EQ(QlixFLVTagGetLength(tag, &length), 0U);
    EXPECT_EQ(length, 19U);
    FLVVideoInfo video{};
    EXPECT_EQ(QlixFLVTagGetVideoInfo(tag, &video), 0U);
    EXPECT_EQ(video.frameType, 2U);
    EXPECT_EQ(video.codecId, 7U);
    FLVAudioInfo audio{};
    EXPECT_EQ(QlixFLVTagGetAudioInfo(tag, &audio), 11U);
    QlixFLVScriptData* data = nullptr;
    EXPECT_EQ(QlixFLVTagGetScriptData(tag, &data), 11U);
    QlixFLVReleaseTag(tag);
}

TEST(QlixFLVInterfaceTest, TellsTheFourFieldsOfAnAudioTag) {
    FlvFixture file(flvFile({audioTag(0, 11, raw({1}), 2, true, false)}));
    QlixFLVTag* tag = firstTag(file);
    FLVAudioInfo audio{};
    EXPECT_EQ(QlixFLVTagGetAudioInfo(tag, &audio), 0U);
    EXPECT_EQ(audio.soundFormat, 11U);
    EXPECT_EQ(audio.sampleRateIndex, 2U);
    EXPECT_EQ(audio.sampleSizeFlag, 1U);
    EXPECT_EQ(audio.channelFlag, 0U);
    QlixFLVReleaseTag(tag);
}

TEST(QlixFLVInterfaceTest, AnEmptyTagHasNoCodec) {
    FlvFixture file(flvFile({flvTag(9, 0, Bytes())}));
    QlixFLVTag* tag = firstTag(file);
    FLVVideoInfo video{};
    EXPECT_EQ(QlixFLVTagGetVideoInfo(tag, &video), 12U);
    QlixFLVReleaseTag(tag);
}

TEST(QlixFLVInterfaceTest, CopiesHeaderAndBodyAsStored) {
    FlvTag stored = mp3Frame(40, raw({1, 2, 3}));
    stored.streamId = 0x0a0b0c;
    FlvFixture file(flvFile({stored}));
    QlixFLVTag* tag = firstTag(file);
    EXPECT_EQ(copied(tag), stored.headerAndBody());

    Bytes room = fill(32, 0xee);
    std::uint32_t count = 0;
    EXPECT_EQ(QlixFLVTagCopyHeaderAndData(tag, 5, room.data(), &count), 0U);
    EXPECT_EQ(count, 5U);
    EXPECT_EQ(room[5], 0xee);
    EXPECT_EQ(QlixFLVTagCopyHeaderAndData(tag, 32, room.data(), &count), 0U);
    EXPECT_EQ(count, 15U);
    EXPECT_EQ(room[15], 0xee);
    QlixFLVReleaseTag(tag);
}

TEST(QlixFLVInterfaceTest, HandlesKeepTheStreamAndTheReaderAlive) {
    FlvFixture file(flvFile({onMetaDataTag(320, 180)}));
    QlixFLVTag* tag = firstTag(file);
    EXPECT_EQ(file.stream.references, 1);
    QlixFLVCloseReader(file.reader);
    file.reader = nullptr;
    EXPECT_EQ(file.stream.references, 1);
    EXPECT_EQ(copied(tag), onMetaDataTag(320, 180).headerAndBody());
    QlixFLVScriptData* data = nullptr;
    EXPECT_EQ(QlixFLVTagGetScriptData(tag, &data), 0U);
    QlixFLVReleaseTag(tag);
    EXPECT_EQ(file.stream.references, 0);
    QlixFLVScriptDataString* name = nullptr;
    EXPECT_EQ(QlixFLVScriptDataGetName(data, &name), 0U);
    QlixFLVReleaseScriptData(data);
    std::uint32_t length = 0;
    EXPECT_EQ(QlixFLVScriptDataStringGetLength(name, &length), 0U);
    EXPECT_EQ(length, 10U);
    QlixFLVReleaseScriptDataString(name);
    EXPECT_EQ(file.allocator.liveBytes, 0U);
}

TEST(QlixFLVInterfaceTest, AStreamThatCannotBeOpenedKeepsNoReference) {
    FlvFixture file(text("no media at all"));
    EXPECT_EQ(file.open(), 4U);
    EXPECT_EQ(file.stream.references, 0);
    EXPECT_EQ(file.allocator.liveBytes, 0U);
}

TEST(QlixFLVInterfaceTest, StreamFailuresGiveTheirOwnCode) {
    FlvFixture file(flvFile({mp3Frame(0, raw({1}))}));
    file.stream.failingRead = 0;
    EXPECT_EQ(file.open(), 5U);

    FlvFixture shrunk(flvFile({mp3Frame(0, raw({1}))}));
    shrunk.stream.claimedSize = 5000;
    EXPECT_EQ(shrunk.open(), 5U);
}

TEST(QlixFLVInterfaceTest, RefusesAStreamThatClaimsToHaveReadMoreThanItWasAskedFor) {
    FlvFixture file(flvFile({mp3Frame(0, raw({1}))}));
    QlixFLVInputStreamCallBacks input = file.stream.callBacks();
    const QlixFLVAllocatorCallBacks memory = file.allocator.callBacks();
    input.read = [](void*, void*, std::uint32_t size, std::uint32_t* bytesRead) {
        *bytesRead = size + 1;
        return std::uint32_t{0};
    };
    QlixFLVReader* reader = nullptr;
    EXPECT_EQ(QlixFLVDocOpenForRead(&input, &memory, &reader), 5U);
    EXPECT_EQ(reader, nullptr);
}

TEST(QlixFLVInterfaceTest, RefusesAStreamThatCantTellItsSize) {
    FlvFixture file(flvFile({mp3Frame(0, raw({1}))}));
    const QlixFLVInputStreamCallBacks input = file.stream.callBacks();
    const QlixFLVAllocatorCallBacks memory = file.allocator.callBacks();
    QlixFLVInputStreamCallBacks failing = input;
    failing.tell = [](void*, std::int64_t*) { return std::uint32_t{1}; };
    QlixFLVInputStreamCallBacks negative = input;
    negative.tell = [](void*, std::int64_t* position) {
        *position = -1;
        return std::uint32_t{0};
    };
    QlixFLVInputStreamCallBacks withoutEnd = input;
    withoutEnd.seek = [](void*, std::int64_t, std::uint32_t) { return std::uint32_t{1}; };
    for (const QlixFLVInputStreamCallBacks& stream : {failing, negative, withoutEnd}) {
        std::int32_t isFlv = 0;
        EXPECT_EQ(QlixFLVDocIsFLV(&stream, &memory, &isFlv), 5U);
        QlixFLVReader* reader = nullptr;
        EXPECT_EQ(QlixFLVDocOpenForRead(&stream, &memory, &reader), 5U);
        EXPECT_EQ(reader, nullptr);
    }
}

TEST(QlixFLVInterfaceTest, RefusesAStreamThatCantGoBackToItsStart) {
    FlvFixture file(flvFile({mp3Frame(0, raw({1}))}));
    QlixFLVInputStreamCallBacks input = file.stream.callBacks();
    const QlixFLVAllocatorCallBacks memory = file.allocator.callBacks();
    static const auto kSeek = input.seek;
    input.seek = [](void* context, std::int64_t offset, std::uint32_t whence) {
        return whence == 0 ? 1U : kSeek(context, offset, whence);
    };
    QlixFLVReader* reader = nullptr;
    EXPECT_EQ(QlixFLVDocOpenForRead(&input, &memory, &reader), 5U);
    EXPECT_EQ(reader, nullptr);
}

TEST(QlixFLVInterfaceTest, GoesOnBehindShortReads) {
    const FlvTag tag = mp3Frame(0, pattern(1000, 3));
    FlvFixture file(flvFile({tag}));
    file.stream.longestRead = 7;
    file.open();
    EXPECT_EQ(drain(file.all()).bytes, std::vector<Bytes>{tag.headerAndBody()});
}

TEST(QlixFLVInterfaceTest, RunningOutOfMemoryAtAnyPointIsACodeAndLeaksNothing) {
    const Bytes content =
        flvFile({onMetaDataTag(320, 180), avcConfig(0), aacFrame(5, raw({1})), avcEnd(9)});
    bool succeeded = false;
    for (int limit = 0; limit < 60 && !succeeded; ++limit) {
        FlvFixture file(content);
        file.allocator.failingAllocation = limit;
        std::uint32_t result = file.open();
        if (result == 0) {
            QlixFLVTagIterator* tags = file.ordered();
            result = file.result;
            if (tags != nullptr) {
                const Drained drained = drain(tags);
                result = drained.result;
                succeeded = result == 0 && drained.tags.size() == 3;
            }
        }
        if (!succeeded) {
            EXPECT_EQ(result, 3U) << "allocation " << limit;
        }
        if (file.reader != nullptr) QlixFLVCloseReader(file.reader);
        file.reader = nullptr;
        EXPECT_EQ(file.allocator.liveBytes, 0U);
        EXPECT_EQ(file.stream.references, 0);
    }
    EXPECT_TRUE(succeeded);
}

}  // namespace
}  // namespace kz::test
