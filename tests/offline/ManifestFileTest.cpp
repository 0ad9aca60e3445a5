#include <gtest/gtest.h>

#include "offline/FailingMemory.h"
#include "offline/ManifestFile.h"
#include "offline/OfflineException.h"
#include "offline/OptionFixture.h"
#include "support/TempDir.h"

namespace torvo::offline {
namespace {

using kz::test::TempDir;
using kz::test::text;

std::string written(kzs::Manifest& manifest) {
    const TempDir folder;
    manifest.commit();
    writeManifestFile(manifest, folder / "m.kzd");
    return kz::test::readFile(folder / "m.kzd").str();
}

bool contains(const std::string& whole, const std::string& part) {
    return whole.find(part) != std::string::npos;
}

TEST(ManifestFileTest, ANewManifestHasTheIdAndTheDurationOfTheRun) {
    const std::string content = written(*makeManifest(defaultsWith({}), "clip", 4.5));
    EXPECT_TRUE(contains(content, "clip"));
    EXPECT_TRUE(contains(content, "recorded"));
    EXPECT_TRUE(contains(content, "4.5"));
}

TEST(ManifestFileTest, ALoadedManifestKeepsItsIdAndDuration) {
    const TempDir folder;
    const std::string path = folder / "old.kzd";
    auto old = makeManifest(defaultsWith({}), "first", 4.5);
    old->commit();
    writeManifestFile(*old, path);
    const std::string content =
        written(*makeManifest(defaultsWith({{"manifest-file", path}}), "second", 9.25));
    EXPECT_TRUE(contains(content, "first"));
    EXPECT_TRUE(contains(content, "4.5"));
    EXPECT_FALSE(contains(content, "second"));
    EXPECT_FALSE(contains(content, "9.25"));
}

/// The failure of a `manifest-file`.
std::string failureOf(const std::string& path, double fragmentDuration = 4.0) {
    try {
        makeManifest(
            defaultsWith({{"manifest-file", path}, {"fragment-duration", fragmentDuration}}), "id",
            0.0);
        return "none";
    } catch (const OfflineException& failure) {
        return std::to_string(failure.code()) + ": " + failure.text();
    }
}

TEST(ManifestFileTest, AFileThatIsNoManifestIsTold) {
    const TempDir folder;
    const std::string none = folder / "none.kzd";
    const std::string broken = folder.write("broken.kzd", text("<manifest>"));
    const std::string empty = folder.write("empty.kzd", kz::test::Bytes());
    EXPECT_EQ(failureOf(none), "1: " + none + " file does not exist");
    EXPECT_EQ(failureOf(folder.path()), "1: Path is not a file " + folder.path());
    EXPECT_EQ(failureOf(broken), "3: invalid input file " + broken);
    EXPECT_EQ(failureOf(empty), "3: invalid input file " + empty);
}

TEST(ManifestFileTest, BadTimingIsToldBeforeABadFile) {
    EXPECT_EQ(failureOf("none.kzd", 0.0),
              "12: Standard Exception: invalid fragment duration specified");
}

TEST(ManifestFileTest, AFullDeviceIsAStreamFailure) {
    auto manifest = makeManifest(defaultsWith({}), "clip", 1.0);
    manifest->commit();
    EXPECT_THROW(writeManifestFile(*manifest, "/dev/full"), std::ios_base::failure);
}

/// Whether the manifest could be written with room for so many allocations.
bool isWrittenWith(long allocations, const kzs::Manifest& manifest, const std::string& path) {
    const kz::test::FailingMemory memory(allocations);
    try {
        writeManifestFile(manifest, path);
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

TEST(ManifestFileTest, AFileIsNotTouchedBeforeItsWholeNewTextIsThere) {
    const TempDir folder;
    const std::string path = folder.write("m.kzd", text("the old one"));
    auto manifest = makeManifest(defaultsWith({}), "clip", 1.0);
    manifest->commit();

    long allocations = 0;
    while (!isWrittenWith(allocations, *manifest, path)) {
        ASSERT_EQ(kz::test::readFile(path).str(), "the old one") << allocations;
        ASSERT_LT(++allocations, 10000);
    }
    EXPECT_GT(allocations, 0);
    EXPECT_TRUE(contains(kz::test::readFile(path).str(), "clip"));
}

}  // namespace
}  // namespace torvo::offline
