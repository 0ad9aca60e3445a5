#include <filesystem>
#include <ios>
#include <string>
#include <sys/syscall.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "offline/OutputFile.h"
#include "offline/WatchedWrites.h"
#include "support/OrdinaryUser.h"
#include "support/TempDir.h"

namespace {

// While it is on, the system takes no byte of what is written to a file, and reports no error.
bool takesNothing = false;

}  // namespace

/// Stands in front of the system library's in this test program.
extern "C" ssize_t write(int descriptor, const void* data, size_t size) {
    return takesNothing && descriptor > 2 ? 0 : ::syscall(SYS_write, descriptor, data, size);
}

namespace torvo::offline {
namespace {

using kz::test::TempDir;
using kz::test::text;

TEST(OutputFileTest, ReplacesWhatIsThere) {
    const TempDir folder;
    const std::string path = folder.write("file", text("something longer"));
    OutputFile file(path);
    file.write(std::string("ab"));
    file.write(std::vector<std::uint8_t>{0, 1});
    file.close();
    EXPECT_EQ(kz::test::readFile(path), text("ab") + kz::test::raw({0, 1}));
}

TEST(OutputFileTest, OverwritesWhatIsThereWhereAsked) {
    const TempDir folder;
    const std::string path = folder.write("file", text("abcdef"));
    OutputFile file(path, OutputFile::Former::isOverwritten);
    file.write(std::string("12"));
    file.close();
    EXPECT_EQ(kz::test::readFile(path), text("12cdef"));
}

TEST(OutputFileTest, MakesAFileToOverwriteThatIsNotThere) {
    const TempDir folder;
    OutputFile file(folder / "file", OutputFile::Former::isOverwritten);
    file.write(std::string("12"));
    file.close();
    EXPECT_EQ(kz::test::readFile(folder / "file"), text("12"));
    EXPECT_THROW(OutputFile(folder.path(), OutputFile::Former::isOverwritten),
                 std::ios_base::failure);
}

// A manifest is written to its name directly: what is there goes when it is opened.
TEST(OutputFileTest, EmptiesWhatIsThereWhenItOpens) {
    const TempDir folder;
    const std::string path = folder.write("file", text("old"));
    OutputFile file(path);
    EXPECT_TRUE(kz::test::readFile(path).empty());
}

TEST(OutputFileTest, WhatIsReplacedStandsUntilTheClose) {
    const TempDir folder;
    const std::string path = folder.write("file", text("old"));
    {
        OutputFile file(path, OutputFile::Former::isReplaced);
        file.write(std::string("new and longer"));
        EXPECT_EQ(kz::test::readFile(path), text("old"));
    }
    EXPECT_EQ(kz::test::readFile(path), text("old"));
    EXPECT_FALSE(kz::test::fileExists(path + ".part"));
}

TEST(OutputFileTest, KeepsTheRightsOfTheFileThatItReplaces) {
    namespace fs = std::filesystem;
    const TempDir folder;
    const std::string path = folder.write("file", text("old"));
    constexpr auto kRights =
        fs::perms::owner_read | fs::perms::owner_write | fs::perms::others_exec;
    fs::permissions(path, kRights);
    OutputFile file(path, OutputFile::Former::isReplaced);
    file.close();
    EXPECT_EQ(fs::status(path).permissions(), kRights);
}

TEST(OutputFileTest, WritesThroughLinksAndIntoFilesOfTwoNames) {
    namespace fs = std::filesystem;
    const TempDir folder;
    const std::string path = folder.write("file", text("old"));
    fs::create_symlink("file", folder / "soft");
    fs::create_hard_link(path, folder / "hard");
    for (const std::string name : {"soft", "hard"}) {
        OutputFile file(folder / name, OutputFile::Former::isReplaced);
        file.write(name);
        file.close();
        EXPECT_EQ(kz::test::readFile(path), text(name));
    }
    EXPECT_TRUE(fs::is_symlink(folder / "soft"));
}

TEST(OutputFileTest, ANameWithoutRoomForAnotherIsWrittenDirectly) {
    const TempDir folder;
    const std::string path = folder / std::string(253, 'n');
    OutputFile file(path, OutputFile::Former::isReplaced);
    file.write(std::string("new"));
    file.close();
    EXPECT_EQ(kz::test::readFile(path), text("new"));
}

TEST(OutputFileTest, OverwritesFromTheStartAndGrows) {
    const TempDir folder;
    const std::string path = folder.write("file", text("abc"));
    OutputFile file(path, OutputFile::Former::isOverwritten);
    file.overwrite(0, text("12345"), 3);
    file.close();
    EXPECT_EQ(kz::test::readFile(path), text("12345"));
}

TEST(OutputFileTest, WhatGrowsIsWrittenBeforeWhatWasThere) {
    const TempDir folder;
    const std::string path = folder.write("file", text("abc"));
    OutputFile file(path, OutputFile::Former::isOverwritten);
    kz::test::WatchedWrites writes("/file");
    file.overwrite(0, text("12345"), 3);
    EXPECT_EQ(writes.take(), "3+2 0+3 ");
    file.overwrite(0, text("abcde"), 5);
    EXPECT_EQ(writes.take(), "0+5 ");
}

// A piece may lie behind what was there, over its end, or inside.
TEST(OutputFileTest, OverwritesWithPiecesAtTheirOffsets) {
    const TempDir folder;
    const std::string path = folder.write("file", text("abcde"));
    OutputFile file(path, OutputFile::Former::isOverwritten);
    kz::test::WatchedWrites writes("/file");
    file.overwrite(6, text("789"), 5);
    file.overwrite(3, text("456"), 5);
    file.overwrite(0, text("123"), 5);
    EXPECT_EQ(writes.take(), "6+3 5+1 3+2 0+3 ");
    file.overwrite(9, text("xyz"), 9);
    EXPECT_EQ(writes.take(), "9+3 ");
    file.close();
    EXPECT_EQ(kz::test::readFile(path), text("123456789xyz"));
}

TEST(OutputFileTest, AWriteThatTakesNothingIsAFailureAndNoEndlessLoop) {
    const TempDir folder;
    OutputFile file(folder / "file");
    takesNothing = true;
    EXPECT_THROW(file.write(std::string("text")), std::ios_base::failure);
    takesNothing = false;
}

TEST(OutputFileTest, AFileThatCantTakeItsPlaceIsAFailureAndLeavesNothing) {
    const TempDir folder;
    const std::string path = folder / "file";
    {
        OutputFile file(path, OutputFile::Former::isReplaced);
        file.write(std::string("text"));
        std::filesystem::create_directory(path);
        EXPECT_THROW(file.close(), std::ios_base::failure);
    }
    EXPECT_FALSE(kz::test::fileExists(path + ".part"));
    EXPECT_TRUE(std::filesystem::is_directory(path));
}

TEST(OutputFileTest, WhatCantBeReplacedInAReadOnlyFolderIsWrittenDirectly) {
    namespace fs = std::filesystem;
    const TempDir folder;
    fs::permissions(folder.write("file", text("old and longer")), fs::perms::all);
    constexpr auto kReadOnly = static_cast<fs::perms>(0555);
    fs::permissions(folder.path(), kReadOnly);
    {
        const kz::test::OrdinaryUser user;
        OutputFile file(folder / "file", OutputFile::Former::isReplaced);
        file.write(std::string("new"));
        file.close();
    }
    fs::permissions(folder.path(), fs::perms::owner_all);
    EXPECT_EQ(kz::test::readFile(folder / "file"), text("new"));
}

TEST(OutputFileTest, AFolderInItsPlaceIsAFailure) {
    const TempDir folder;
    EXPECT_THROW(OutputFile(folder.path()), std::ios_base::failure);
}

TEST(OutputFileTest, AFolderThatIsNotThereIsAFailure) {
    const TempDir folder;
    EXPECT_THROW(OutputFile(folder / "none/file"), std::ios_base::failure);
}

TEST(OutputFileTest, AFullDeviceIsAFailureAtTheLatestWhenItIsClosed) {
    EXPECT_THROW(
        {
            OutputFile file("/dev/full");
            file.write(std::string("few"));
            file.close();
        },
        std::ios_base::failure);
    EXPECT_THROW(OutputFile("/dev/full").write(std::string(100000, 'x')), std::ios_base::failure);
}

}  // namespace
}  // namespace torvo::offline
