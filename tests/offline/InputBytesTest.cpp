#include <functional>
#include <unistd.h>

#include <gtest/gtest.h>

#include "offline/InputBytes.h"
#include "offline/OfflineException.h"
#include "support/TempDir.h"

namespace torvo::offline {
namespace {

using kz::test::Bytes;
using kz::test::pattern;
using kz::test::TempDir;

std::string failureOf(const std::string& path) {
    try {
        readInputBytes(path);
        return "none";
    } catch (const OfflineException& failure) {
        return std::to_string(failure.code()) + ": " + failure.text();
    }
}

TEST(InputBytesTest, AnswersExactlyTheBytesOfTheFile) {
    const TempDir folder;
    for (const std::size_t size : {0U, 1U, 1023U, 1024U, 1025U, 5000U}) {
        const Bytes content = pattern(size, 3);
        const std::string path = folder.write("key", content);
        EXPECT_EQ(readInputBytes(path), std::vector<std::uint8_t>(content)) << size;
        const hlx::SecretBytes secret = readSecretBytes(path);
        EXPECT_EQ(Bytes(secret.begin(), secret.end()), content) << size;
    }
}

TEST(InputBytesTest, AMissingFileIsToldWithItsPath) {
    const TempDir folder;
    EXPECT_EQ(failureOf(folder / "none"), "1: " + (folder / "none") + " file does not exist");
}

// No path at all, as an option that wasn't given has it.
TEST(InputBytesTest, AnEmptyPathHasNothingInFrontOfTheText) {
    EXPECT_EQ(failureOf(""), "1:  file does not exist");
}

TEST(InputBytesTest, AFolderIsNoFile) {
    const TempDir folder;
    EXPECT_EQ(failureOf(folder.path()), "1: Path is not a file " + folder.path());
}

TEST(InputBytesTest, AFileWithoutAnEndIsRefused) {
    EXPECT_EQ(failureOf("/dev/zero"), "4: cannot access input file /dev/zero");
}

}  // namespace
}  // namespace torvo::offline
