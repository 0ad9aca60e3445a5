#include <filesystem>

#include <boost/filesystem/exception.hpp>
#include <gtest/gtest.h>

#include "offline/OptionFixture.h"
#include "offline/OutputNames.h"
#include "support/TempDir.h"

namespace torvo::offline {
namespace {

std::string baseName(const std::string& input, const std::string& output = "") {
    return baseNameOf(defaultsWith({{"input-file", input}, {"output-manifest-file", output}}));
}

TEST(OutputNamesTest, TheInputsNameLosesItsFoldersAndItsLastExtension) {
    EXPECT_EQ(baseName("clip.flv"), "clip");
    EXPECT_EQ(baseName("/a/b.c/movie.part1.flv"), "movie.part1");
    EXPECT_EQ(baseName("noextension"), "noextension");
}

TEST(OutputNamesTest, TheOutputNameStandsInForTheInputs) {
    EXPECT_EQ(baseName("clip.flv", "sub/dir/name.xyz"), "name");
    EXPECT_EQ(baseName("clip.flv", "name"), "name");
}

TEST(OutputNamesTest, OddNamesGiveOddStems) {
    EXPECT_EQ(baseName(".flv"), "");
    EXPECT_EQ(baseName("clip.flv", "dir/"), ".");
    EXPECT_EQ(baseName(".."), "..");
    EXPECT_EQ(baseName("x."), "x");
}

TEST(OutputNamesTest, FilesLieInTheOutputPath) {
    const OptionMap options = defaultsWith({{"output-path", std::string("out")}});
    EXPECT_EQ(pathInOutput(options, "a.kzd"), "out/a.kzd");
    EXPECT_EQ(pathInOutput(defaultsWith({{"output-path", std::string("out/")}}), "a.kzd"),
              "out/a.kzd");
    EXPECT_EQ(lastComponentOf("out/a.kzd"), "a.kzd");
}

void makePath(const std::string& path) { makeOutputPath(defaultsWith({{"output-path", path}})); }

TEST(OutputNamesTest, AnOutputPathIsMadeWithAllItsParents) {
    const kz::test::TempDir folder;
    makePath(folder / "a/b/c");
    EXPECT_TRUE(std::filesystem::is_directory(folder / "a/b/c"));
    makePath(folder / "a/b/c");
}

TEST(OutputNamesTest, TheFoldersThatAreAlwaysThereNeedNotBeMade) {
    EXPECT_NO_THROW(makePath("."));
    EXPECT_NO_THROW(makePath("./"));
    EXPECT_NO_THROW(makePath(".."));
}

TEST(OutputNamesTest, APathThatCanNotBeMadeIsAFailure) {
    const kz::test::TempDir folder;
    const std::string file = folder.write("file", kz::test::text("x"));
    EXPECT_THROW(makePath(file), boost::filesystem::filesystem_error);
    EXPECT_THROW(makePath(file + "/below"), boost::filesystem::filesystem_error);
    EXPECT_THROW(makePath(""), boost::filesystem::filesystem_error);
}

}  // namespace
}  // namespace torvo::offline
