#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <pthread.h>
#include <sys/stat.h>
#include <thread>

#include <gtest/gtest.h>

#include "kzs/base/FileStream.h"
#include "kzs/base/IOStreamException.h"
#include "support/FailingClose.h"
#include "support/TempDir.h"

namespace torvo::kzs {
namespace {

using kz::test::Bytes;
using kz::test::readFile;
using kz::test::TempDir;
using kz::test::text;

constexpr std::uint32_t kReadOnly = openFlagsFor(false, false);
constexpr std::uint32_t kNewFile = openFlagsFor(true, false);
constexpr std::uint32_t kKeepFile = openFlagsFor(true, true);

template <typename Call>
std::int32_t codeThrownBy(Call call) {
    try {
        call();
    } catch (const IOStreamException& e) {
        return e.code();
    }
    return -1;
}

std::string readAll(FileStream& stream, std::uint64_t count) {
    std::string out(count, '\0');
    out.resize(stream.read(out.data(), count));
    return out;
}

TEST(FileStreamTest, MakesItsOpenFlagsFromTwoChoices) {
    EXPECT_EQ(openFlagsFor(false, false), 0x8000U);
    EXPECT_EQ(openFlagsFor(false, true), 0x8000U);
    EXPECT_EQ(openFlagsFor(true, false), 0x8302U);
    EXPECT_EQ(openFlagsFor(true, true), 0x8102U);
}

TEST(FileStreamTest, DoesNotOpenWhenItIsMade) {
    const TempDir dir;
    FileStream stream(dir / "a", kNewFile);
    EXPECT_FALSE(stream.isOpen());
    EXPECT_FALSE(kz::test::fileExists(dir / "a"));
}

TEST(FileStreamTest, RefusesAMissingFileWithCode6AndItsPath) {
    const TempDir dir;
    FileStream stream(dir / "missing", kReadOnly);
    try {
        stream.open();
        FAIL() << "a missing file was opened";
    } catch (const IOStreamException& e) {
        EXPECT_EQ(e.code(), 6);
        EXPECT_EQ(e.path(), dir / "missing");
        EXPECT_STREQ(e.what(), "");
    }
    EXPECT_FALSE(stream.isOpen());
}

TEST(FileStreamTest, MapsFiveSystemErrorsAndCallsTheOthers1) {
    EXPECT_EQ(IOStreamException::codeOf(0), 0);
    EXPECT_EQ(IOStreamException::codeOf(EINVAL), 2);
    EXPECT_EQ(IOStreamException::codeOf(EACCES), 3);
    EXPECT_EQ(IOStreamException::codeOf(EEXIST), 4);
    EXPECT_EQ(IOStreamException::codeOf(EMFILE), 5);
    EXPECT_EQ(IOStreamException::codeOf(ENOENT), 6);
    EXPECT_EQ(IOStreamException::codeOf(EISDIR), 1);
    EXPECT_EQ(IOStreamException::codeOf(ENOSPC), 1);
}

TEST(FileStreamTest, WritesSeeksAndReadsBack) {
    const TempDir dir;
    FileStream stream(dir / "a", kNewFile);
    stream.open();
    EXPECT_EQ(stream.write("abcdef", 6), 6U);
    EXPECT_EQ(stream.tell(), 6U);
    EXPECT_EQ(stream.seek(2, kFromStart), 2U);
    EXPECT_EQ(readAll(stream, 2), "cd");
    EXPECT_EQ(stream.seek(-1, kFromCurrent), 3U);
    EXPECT_EQ(stream.seek(-2, kFromEnd), 4U);
    EXPECT_EQ(readAll(stream, 100), "ef");
    EXPECT_EQ(readAll(stream, 100), "");
}

TEST(FileStreamTest, CountsFromThePositionForAnyOtherOrigin) {
    const TempDir dir;
    FileStream stream(dir.write("a", text("abcdef")), kReadOnly);
    stream.open();
    stream.seek(2, kFromStart);
    EXPECT_EQ(stream.seek(1, 7), 3U);
    EXPECT_EQ(stream.seek(1, -1), 4U);
}

TEST(FileStreamTest, DoesNothingWithoutABufferOrACount) {
    // The stream is closed: a call to the system would fail.
    FileStream stream("nowhere", kReadOnly);
    char buffer[1] = {'x'};
    EXPECT_EQ(stream.read(nullptr, 5), 0U);
    EXPECT_EQ(stream.read(buffer, 0), 0U);
    EXPECT_EQ(stream.write(nullptr, 5), 0U);
    EXPECT_EQ(stream.write(buffer, 0), 0U);
    EXPECT_EQ(codeThrownBy([&] { stream.read(buffer, 1); }), 1);
}

TEST(FileStreamTest, TruncatesANewFileAndKeepsAnOldOneAsAsked) {
    const TempDir dir;
    const std::string path = dir.write("a", text("abcdef"));
    {
        FileStream stream(path, kKeepFile);
        stream.open();
        stream.write("XY", 2);
    }
    EXPECT_EQ(readFile(path), text("XYcdef"));
    {
        FileStream stream(path, kNewFile);
        stream.open();
    }
    EXPECT_EQ(readFile(path), Bytes());
}

TEST(FileStreamTest, CutsAndExtendsAFile) {
    const TempDir dir;
    const std::string path = dir.write("a", text("abcdef"));
    FileStream stream(path, kKeepFile);
    stream.open();
    stream.truncate(2);
    EXPECT_EQ(readFile(path), text("ab"));
    stream.truncate(3);
    EXPECT_EQ(readFile(path), text("ab") + kz::test::u8(0));
    EXPECT_EQ(stream.tell(), 0U);
}

TEST(FileStreamTest, FailsWhereTheFileIsNotWritable) {
    const TempDir dir;
    FileStream stream(dir.write("a", text("abc")), kReadOnly);
    stream.open();
    EXPECT_EQ(codeThrownBy([&] { stream.write("x", 1); }), 1);
    EXPECT_EQ(codeThrownBy([&] { stream.truncate(1); }), 2);
    EXPECT_EQ(codeThrownBy([&] { stream.seek(-1, kFromStart); }), 2);
}

TEST(FileStreamTest, FailsToReadAFolder) {
    const TempDir dir;
    FileStream stream(dir.path(), kReadOnly);
    stream.open();
    char buffer[4];
    EXPECT_EQ(codeThrownBy([&] { stream.read(buffer, 4); }), 1);
}

TEST(FileStreamTest, TakesANewDescriptorWhenOpenedTwice) {
    const TempDir dir;
    FileStream stream(dir.write("a", text("abcdef")), kReadOnly);
    const auto openFiles = [] {
        const std::filesystem::directory_iterator folder("/proc/self/fd");
        return std::distance(begin(folder), end(folder));
    };
    const auto before = openFiles();
    stream.open();
    stream.seek(3, kFromStart);
    stream.open();
    EXPECT_EQ(openFiles(), before + 2);
    EXPECT_EQ(stream.tell(), 0U);
}

TEST(FileStreamTest, ClosesTwiceWithoutHarm) {
    const TempDir dir;
    FileStream stream(dir.write("a", text("abc")), kReadOnly);
    stream.close();
    stream.open();
    stream.close();
    stream.close();
    EXPECT_FALSE(stream.isOpen());
    EXPECT_EQ(stream.tell(), 0xFFFFFFFFFFFFFFFFU);
}

TEST(FileStreamTest, SettlesToHearOfFailuresThatAreToldLateAndStaysOpen) {
    const TempDir dir;
    FileStream stream(dir / "a", kNewFile);
    stream.open();
    stream.write("abc", 3);
    stream.settle();
    {
        const kz::test::FailingClose fault("/a", EDQUOT);
        EXPECT_THROW(stream.settle(), IOStreamException);
    }
    {
        const kz::test::FailingClose interruption("/a", EINTR);
        EXPECT_NO_THROW(stream.settle());
    }
    EXPECT_EQ(stream.write("d", 1), 1U);
    EXPECT_EQ(stream.tell(), 4U);
    stream.close();
    EXPECT_THROW(stream.settle(), IOStreamException);
}

TEST(FileStreamTest, ClosesWithoutAWordWhateverTheSystemSays) {
    const TempDir dir;
    FileStream stream(dir / "a", kNewFile);
    stream.open();
    const kz::test::FailingClose fault("/a", EIO);
    stream.close();
    EXPECT_FALSE(stream.isOpen());
}

TEST(FileStreamTest, ReachesPositionsAbove4GiB) {
    const TempDir dir;
    const std::string path = dir / "sparse";
    FileStream stream(path, kNewFile);
    stream.open();
    EXPECT_EQ(stream.seek(0x100000001, kFromStart), 0x100000001U);
    stream.write("z", 1);
    EXPECT_EQ(stream.seek(0, kFromEnd), 0x100000002U);
    stream.truncate(1);
}

/// Lets a signal interrupt the calls of this thread instead of ending the program.
class Interruptible {
public:
    Interruptible() {
        struct sigaction action {};
        action.sa_handler = [](int) { ++interruptions(); };
        sigaction(SIGUSR1, &action, &former_);  // without SA_RESTART
        interruptions() = 0;
    }
    ~Interruptible() { sigaction(SIGUSR1, &former_, nullptr); }
    Interruptible(const Interruptible&) = delete;
    Interruptible& operator=(const Interruptible&) = delete;

    static std::atomic<int>& interruptions() {
        static std::atomic<int> count{0};
        return count;
    }

private:
    struct sigaction former_ {};
};

/// Interrupts `thread` until it was really interrupted some times.
void interrupt(pthread_t thread) {
    for (int i = 0; i < 20; ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
        pthread_kill(thread, SIGUSR1);
    }
}

TEST(FileStreamTest, MakesCallsAgainThatASignalInterrupts) {
    const TempDir dir;
    const std::string pipe = dir / "pipe";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    const Interruptible handler;
    // The reader waits in open for a writer, then in read for what it writes.
    std::thread other([&pipe, reader = pthread_self()] {
        interrupt(reader);
        std::ofstream out(pipe, std::ios::binary);
        interrupt(reader);
        out << "abc";
    });
    FileStream stream(pipe, kReadOnly);
    std::string got;
    EXPECT_EQ(codeThrownBy([&] {
                  stream.open();
                  got = readAll(stream, 3);
              }),
              -1);
    // Had the reader failed, the writer would wait for one for ever.
    FileStream both(pipe, kOpenBinary | kOpenReadWrite);
    both.open();
    other.join();
    EXPECT_EQ(got, "abc");
    EXPECT_GT(Interruptible::interruptions(), 0);
}

TEST(FileStreamTest, AppendsAndDemandsANewFileAndOnlyWritesWhenItsFlagsSaySo) {
    const TempDir dir;
    const std::string path = dir.write("a", text("abc"));
    FileStream appending(path, kOpenBinary | kOpenReadWrite | kOpenAppend);
    appending.open();
    appending.write("d", 1);
    EXPECT_EQ(readFile(path), text("abcd"));

    FileStream fresh(path, kOpenBinary | kOpenReadWrite | kOpenCreate | kOpenExclusive);
    EXPECT_EQ(codeThrownBy([&] { fresh.open(); }), 4);

    FileStream writeOnly(path, kOpenBinary | kOpenWriteOnly);
    writeOnly.open();
    writeOnly.write("A", 1);
    EXPECT_EQ(readFile(path), text("Abcd"));
    char byte = 0;
    EXPECT_EQ(codeThrownBy([&] { writeOnly.read(&byte, 1); }), 1);
}

TEST(FileStreamTest, LeavesBitsAsideThatMeanNothingHere) {
    const TempDir dir;
    // As bits of the system these would make a file or demand aligned buffers.
    FileStream missing(dir / "missing", 0x0040 | kOpenReadWrite);
    EXPECT_EQ(codeThrownBy([&] { missing.open(); }), 6);
    FileStream stream(dir.write("a", text("abc")), 0x7FFFF0F4 | kOpenText);
    stream.open();
    EXPECT_EQ(readAll(stream, 3), "abc");
}

TEST(FileStreamTest, ClosesItsFileWhenItGoes) {
    const TempDir dir;
    const auto openFiles = [] {
        const std::filesystem::directory_iterator folder("/proc/self/fd");
        return std::distance(begin(folder), end(folder));
    };
    const auto before = openFiles();
    {
        FileStream stream(dir.write("a", text("abc")), kReadOnly);
        stream.open();
        EXPECT_EQ(openFiles(), before + 1);
    }
    EXPECT_EQ(openFiles(), before);
}

TEST(FileStreamTest, RefusesPositionsThatNoFileHasWithCode2AndStaysWhereItWas) {
    const TempDir dir;
    FileStream stream(dir.write("a", text("abcdef")), kReadOnly);
    stream.open();
    stream.seek(2, kFromStart);
    EXPECT_EQ(codeThrownBy([&] { stream.seek(-3, kFromCurrent); }), 2);
    EXPECT_EQ(codeThrownBy([&] { stream.seek(-7, kFromEnd); }), 2);
    EXPECT_EQ(codeThrownBy([&] { stream.seek(0x7FFFFFFFFFFFFFFF, kFromCurrent); }), 2);
    EXPECT_EQ(stream.tell(), 2U);
    EXPECT_EQ(readAll(stream, 1), "c");
}

TEST(FileStreamTest, ReadsAPipeInItsOrder) {
    const TempDir dir;
    const std::string path = dir / "pipe";
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    FileStream both(path, kOpenReadWrite);  // so that neither end waits for the other
    both.open();
    EXPECT_EQ(both.write("abcdef", 6), 6U);
    EXPECT_EQ(readAll(both, 2), "ab");
    EXPECT_EQ(readAll(both, 3), "cde");
    EXPECT_EQ(codeThrownBy([&] { both.seek(0, kFromStart); }), 1);
    EXPECT_EQ(both.tell(), 0xFFFFFFFFFFFFFFFFU);
}

TEST(FileStreamTest, AppendsWhereverItStands) {
    const TempDir dir;
    const std::string path = dir.write("a", text("abc"));
    FileStream stream(path, kOpenReadWrite | kOpenAppend);
    stream.open();
    EXPECT_EQ(readAll(stream, 1), "a");
    stream.seek(0, kFromStart);
    EXPECT_EQ(stream.write("XY", 2), 2U);
    EXPECT_EQ(stream.tell(), 5U);
    EXPECT_EQ(readFile(path), text("abcXY"));
}

TEST(FileStreamTest, ReadsWhatAnotherStreamWroteMeanwhile) {
    const TempDir dir;
    const std::string path = dir.write("a", text("abcdef"));
    FileStream reader(path, kReadOnly);
    FileStream writer(path, kKeepFile);
    reader.open();
    writer.open();
    EXPECT_EQ(readAll(reader, 2), "ab");
    writer.seek(3, kFromStart);
    writer.write("XYZ123", 6);
    EXPECT_EQ(readAll(reader, 100), "cXYZ123");
    EXPECT_EQ(reader.seek(0, kFromEnd), 9U);
}

TEST(FileStreamTest, GivesNewFilesToEveryoneLessTheUmask) {
    const TempDir dir;
    const mode_t former = umask(022);
    FileStream stream(dir / "a", kNewFile);
    stream.open();
    umask(former);
    EXPECT_EQ(static_cast<unsigned>(std::filesystem::status(dir / "a").permissions()), 0644U);
}

}  // namespace
}  // namespace torvo::kzs
