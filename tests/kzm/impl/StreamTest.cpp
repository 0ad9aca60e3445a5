#include <new>

#include <gtest/gtest.h>

#include "kzm/impl/BoxSupport.h"

namespace qlix::kzm::impl {
namespace {

using namespace kz::test;

/// A file in memory that takes parts, and no write without.
class GatheringStream : public MemoryStream, public QlixGatherStream {
public:
    std::uint64_t write(const void*, std::uint64_t) override {
        ADD_FAILURE() << "written without parts";
        return 0;
    }

    std::uint64_t writeParts(const WritePart* parts, std::size_t count) override {
        ++gathers;
        EXPECT_LE(count, kMostParts);
        const std::uint64_t most = mostPerWrite;
        std::uint64_t done = 0;
        for (std::size_t i = 0; i < count && done < most; ++i) {
            const std::uint64_t wanted = std::min(parts[i].size, most - done);
            const std::uint64_t taken = MemoryStream::write(parts[i].data, wanted);
            done += taken;
            if (taken < wanted) break;
        }
        return done;
    }

    std::uint64_t gathers = 0;
};

std::vector<WritePart> partsOf(const std::vector<Bytes>& pieces) {
    std::vector<WritePart> parts;
    for (const Bytes& each : pieces) parts.push_back({each.data(), each.size()});
    return parts;
}

TEST(QlixKZMIStreamTest, HoldsAReferenceWhileItLives) {
    MemoryStream memory;
    {
        QlixKZMIStream stream(&memory);
        EXPECT_EQ(memory.references, 1);
    }
    EXPECT_EQ(memory.references, 0);
    EXPECT_EQ(codeThrownBy([] { QlixKZMIStream stream(nullptr); }), 20U);
}

TEST(QlixKZMIStreamTest, ThrowsFiveOnAShortRead) {
    ReadFile file(raw({1, 2, 3}));
    std::uint8_t bytes[4];
    EXPECT_EQ(codeThrownBy([&] { file.stream.readExact(bytes, 4); }), 5U);
}

TEST(QlixKZMIStreamTest, MeasuresTheSizeOnceAndKeepsThePosition) {
    ReadFile file(pattern(50, 1));
    file.stream.seek(7);
    EXPECT_EQ(file.stream.byteSize(), 50U);
    const std::uint64_t calls = file.memory.calls;
    file.memory.content.clear();
    EXPECT_EQ(file.stream.byteSize(), 50U);
    EXPECT_EQ(file.memory.calls, calls);
    EXPECT_EQ(file.stream.tell(), 7U);
    EXPECT_EQ(file.stream.left(), 43U);
    file.stream.seek(90);
    EXPECT_EQ(file.stream.left(), 0U);
}

/// As a file that the system can't tell the position of.
class LostStream final : public MemoryStream {
public:
    using MemoryStream::MemoryStream;
    std::uint64_t tell() override { return --tellsLeft == 0 ? kNever : MemoryStream::tell(); }

    int tellsLeft = 0;
};

TEST(QlixKZMIStreamTest, ThrowsFiveWhenTheStreamCantTellItsSize) {
    for (const int failing : {1, 2}) {
        LostStream memory(pattern(50, 1));
        memory.tellsLeft = failing;
        QlixKZMIStream stream(&memory);
        stream.open();
        EXPECT_EQ(codeThrownBy([&] { stream.byteSize(); }), 5U) << failing;
    }
}

TEST(QlixKZMIStreamTest, GivesTheSameBytesInPiecesOfAnySize) {
    const Bytes content = pattern(50000, 9);
    for (const std::size_t piece : {1000U, 16383U, 16384U, 16385U, 49999U, 50000U}) {
        ReadFile file(content);
        file.memory.mostPerRead = 777;
        Bytes got;
        Bytes part(piece);
        for (;;) {
            const std::uint64_t count = file.stream.read(part.data(), part.size());
            if (count == 0) break;
            got += part.cutTo(static_cast<std::size_t>(count));
        }
        EXPECT_EQ(got, content) << piece;
    }
}

TEST(QlixKZMIStreamTest, ServesNearbyFieldsFromOneRead) {
    ReadFile file(pattern(4000, 1));
    for (std::uint64_t at : {0U, 8U, 3000U, 100U}) {
        file.stream.seek(at);
        file.stream.readU32();
    }
    EXPECT_EQ(file.memory.reads, 2U);  // one of them says that the file ends
}

TEST(QlixKZMIStreamTest, PassesOnWhatTheStreamThrows) {
    ReadFile file(pattern(10, 1));
    file.memory.failAtCall = file.memory.calls;
    file.memory.failure = 3;
    EXPECT_EQ(codeThrownBy([&] { file.stream.readU32(); }), 3U);
}

TEST(QlixKZMIOStreamTest, JoinsAdjacentWrites) {
    WriteFile file;
    Bytes expected;
    for (unsigned i = 0; i < 100; ++i) {
        const Bytes part = pattern(i, i);
        file.stream.write(part.data(), part.size());
        expected += part;
    }
    EXPECT_EQ(file.memory.writes, 0U);
    EXPECT_EQ(file.bytes(), expected);
    EXPECT_EQ(file.memory.writes, 1U);
    EXPECT_EQ(file.memory.seeks, 0U);
}

TEST(QlixKZMIOStreamTest, PatchesBytesThatStillWait) {
    WriteFile file;
    file.stream.write("abcdefgh", 8);
    file.stream.seek(2);
    file.stream.write("CD", 2);
    EXPECT_EQ(file.stream.tell(), 4U);
    file.stream.seek(7);
    file.stream.write("HI", 2);  // only half of it lies among the waiting bytes
    EXPECT_EQ(file.bytes(), text("abCDefgHI"));
}

TEST(QlixKZMIOStreamTest, WritesElsewhereInTheOrderOfTheCalls) {
    WriteFile file;
    file.stream.write("aaaa", 4);
    file.stream.seek(2);
    file.stream.write("bbbb", 4);
    file.stream.seek(0);
    file.stream.write("c", 1);
    EXPECT_EQ(file.bytes(), text("cabbbb"));
}

TEST(QlixKZMIOStreamTest, ReadsBackWhatWaits) {
    WriteFile file;
    file.stream.write("abcd", 4);
    file.stream.seek(1);
    char got[2];
    EXPECT_EQ(file.stream.read(got, 2), 2U);
    EXPECT_EQ(std::string(got, 2), "bc");
    EXPECT_EQ(file.stream.byteSize(), 4U);
}

TEST(QlixKZMIOStreamTest, ContinuesAShortWrite) {
    WriteFile file;
    file.memory.mostPerWrite = 3;
    const Bytes large = pattern(100000, 5);
    file.stream.write("abcdefgh", 8);
    file.stream.write(large.data(), large.size());
    EXPECT_EQ(file.bytes(), text("abcdefgh") + large);
}

TEST(QlixKZMIOStreamTest, ThrowsWriteFailedWhenTheDiskIsFull) {
    for (const std::size_t size : {std::size_t{100}, std::size_t{100000}}) {
        WriteFile file;
        file.memory.capacity = 50;
        const Bytes content = pattern(size, 1);
        EXPECT_EQ(codeThrownBy([&] {
                      file.stream.write(content.data(), content.size());
                      file.stream.flush();
                  }),
                  1024U);
    }
}

TEST(QlixKZMIOStreamTest, ThrowsWriteFailedWhenTheStreamThrowsWhileWriting) {
    WriteFile file;
    file.stream.write("abc", 3);
    file.memory.failAtCall = file.memory.calls;
    file.memory.failure = 3;
    EXPECT_EQ(codeThrownBy([&] { file.stream.flush(); }), 1024U);
    EXPECT_EQ(codeThrownBy([&] { file.stream.flush(); }), 0U);  // what failed is dropped
    file.memory.failAtCall = file.memory.calls;
    EXPECT_EQ(codeThrownBy([&] { file.stream.truncate(1); }), 1024U);
}

TEST(QlixKZMIOStreamTest, ALackOfMemoryWhileWritingStaysOne) {
    struct PoorStream : MemoryStream {
        std::uint64_t write(const void*, std::uint64_t) override { throw std::bad_alloc(); }
    };
    PoorStream memory;
    QlixKZMIOStream stream(&memory);
    stream.open();
    stream.write("abc", 3);
    EXPECT_THROW(stream.flush(), std::bad_alloc);
}

TEST(QlixKZMIOStreamTest, PassesOnTheNumberOfAFailedSeek) {
    WriteFile file;
    file.stream.seek(10);
    file.stream.write("abc", 3);
    file.memory.failAtCall = file.memory.calls;
    file.memory.failure = 2;
    EXPECT_EQ(codeThrownBy([&] { file.stream.flush(); }), 2U);
}

TEST(QlixKZMIOStreamTest, ClosesAlsoWhenTheLastBytesCantBeWritten) {
    WriteFile file;
    file.memory.capacity = 1;
    file.stream.write("abc", 3);
    EXPECT_EQ(codeThrownBy([&] { file.stream.close(); }), 1024U);
    EXPECT_FALSE(file.memory.isOpen);
}

TEST(QlixKZMIOStreamTest, GathersPartsBehindWhatWaitsByOneCall) {
    GatheringStream memory;
    QlixKZMIOStream stream(&memory);
    stream.open();
    const std::vector<Bytes> pieces = {text("cd"), text(""), text("efg"), pattern(70000, 3)};
    const std::vector<WritePart> parts = partsOf(pieces);
    stream.write("ab", 2);
    stream.writeParts(parts.data(), parts.size());
    EXPECT_EQ(memory.gathers, 1U);
    EXPECT_EQ(memory.content, text("abcdefg") + pieces.back());
    EXPECT_EQ(stream.tell(), 70007U);
    EXPECT_EQ(stream.byteSize(), 70007U);
}

TEST(QlixKZMIOStreamTest, GathersWhereItStandsAndWritesOnBehind) {
    MemoryStream plain;
    struct Both : MemoryStream, QlixGatherStream {
        std::uint64_t writeParts(const WritePart* parts, std::size_t) override {
            return write(parts[0].data, parts[0].size);  // one part at a time
        }
    } gathering;
    for (MemoryStream* memory : {&plain, static_cast<MemoryStream*>(&gathering)}) {
        QlixKZMIOStream stream(memory);
        stream.open();
        const std::vector<Bytes> pieces = {text("12"), text("345")};
        stream.write("abcdefgh", 8);
        stream.seek(2);
        stream.writeParts(partsOf(pieces).data(), pieces.size());
        stream.write("X", 1);
        stream.seek(20);
        stream.writeParts(partsOf(pieces).data(), 0);
        stream.flush();
        EXPECT_EQ(memory->content, text("ab12345X"));
        EXPECT_EQ(stream.tell(), 20U);
    }
}

TEST(QlixKZMIOStreamTest, GathersMorePartsThanOneCallTakes) {
    GatheringStream memory;
    QlixKZMIOStream stream(&memory);
    stream.open();
    std::vector<Bytes> pieces;
    Bytes expected;
    for (unsigned i = 0; i < 3000; ++i) {
        pieces.push_back(pattern(i % 7, i));
        expected += pieces.back();
    }
    const std::vector<WritePart> parts = partsOf(pieces);
    stream.writeParts(parts.data(), parts.size());
    EXPECT_EQ(memory.content, expected);
    EXPECT_EQ(memory.gathers, 3U);
}

TEST(QlixKZMIOStreamTest, ContinuesAShortGatherInTheMidstOfAPart) {
    for (const std::uint64_t most : {1U, 2U, 3U, 4U, 5U, 9U}) {
        GatheringStream memory;
        memory.mostPerWrite = most;
        QlixKZMIOStream stream(&memory);
        stream.open();
        const std::vector<Bytes> pieces = {text("abc"), text("defg"), text("h")};
        const std::vector<WritePart> parts = partsOf(pieces);
        stream.writeParts(parts.data(), parts.size());
        EXPECT_EQ(memory.content, text("abcdefgh")) << most;
    }
}

TEST(QlixKZMIOStreamTest, ThrowsWriteFailedWhenAGatherTakesNothingOrTooMuchOrThrows) {
    GatheringStream memory;
    QlixKZMIOStream stream(&memory);
    stream.open();
    const std::vector<Bytes> pieces = {text("abc"), text("defg")};
    const std::vector<WritePart> parts = partsOf(pieces);
    memory.capacity = 5;
    EXPECT_EQ(codeThrownBy([&] { stream.writeParts(parts.data(), parts.size()); }), 1024U);
    memory.capacity = MemoryStream::kNever;
    memory.failAtCall = memory.calls + 1;  // behind the seek, for where it stands isn't known
    memory.failure = 3;
    EXPECT_EQ(codeThrownBy([&] { stream.writeParts(parts.data(), parts.size()); }), 1024U);

    struct Greedy : MemoryStream, QlixGatherStream {
        std::uint64_t writeParts(const WritePart*, std::size_t) override { return 8; }
    } greedy;
    QlixKZMIOStream other(&greedy);
    other.open();
    EXPECT_EQ(codeThrownBy([&] { other.writeParts(parts.data(), parts.size()); }), 1024U);
}

TEST(QlixKZMStreamTest, TheBaseClassDoesNothing) {
    QlixKZMStream stream;
    stream.open();
    stream.write("abc", 3);
    stream.seek(4);
    stream.flush();
    stream.truncate(0);
    stream.close();
    EXPECT_EQ(stream.tell(), 0U);
    EXPECT_EQ(stream.byteSize(), 0U);
    EXPECT_EQ(codeThrownBy([&] { stream.readU32(); }), 5U);
}

TEST(QlixKZMStreamTest, ToleratesWarningsWithoutACallback) {
    ReadFile file(text("abc"));
    file.stream.setWarningCallback(nullptr, nullptr);
    EXPECT_FALSE(readBoxHeader(file.stream, nullptr));
}

}  // namespace
}  // namespace qlix::kzm::impl
