#include <filesystem>

#include <gtest/gtest.h>

#include "offline/OutputFile.h"
#include "support/TempDir.h"

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
