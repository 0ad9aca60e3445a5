#include <gtest/gtest.h>

#include "kzs/Base64.h"
#include "offline/ManifestFile.h"
#include "offline/ManifestUpdate.h"
#include "offline/OfflineException.h"
#include "offline/OptionFixture.h"
#include "support/TempDir.h"

namespace torvo::offline {
namespace {

using kz::test::Bytes;
using kz::test::fileExists;
using kz::test::readFile;
using kz::test::TempDir;
using kz::test::writeFile;

const std::vector<std::uint8_t> kNewHeader = {'n', 'e', 'w'};

/// How often `part` stands in `whole`.
int count(const std::string& whole, const std::string& part) {
    int hits = 0;
    for (auto at = whole.find(part); at != std::string::npos; at = whole.find(part, at + 1)) ++hits;
    return hits;
}

class ManifestUpdateTest : public ::testing::Test {
protected:
    /// Writes a manifest of renditions "a", "b" ... with a protection header each.
    std::string manifest(const std::string& name, int renditions, const std::string& url = "") {
        const auto made = makeManifest(defaultsWith({}), "clip", 4.0);
        for (int i = 0; i < renditions; ++i) {
            const std::string id(1, static_cast<char>('a' + i));
            kzs::Rendition& rendition = made->addMedia(id, id, 0.0);
            rendition.drmContentId = "movie7";
            rendition.drmMetadata = {'o', 'l', 'd'};
            rendition.drmUrl = url;
        }
        made->commit();
        const std::string path = folder / name;
        writeManifestFile(*made, path);
        return path;
    }
    OptionMap options(const std::string& manifestFile, const std::string& outputName = "") {
        return defaultsWith({{"manifest-file", manifestFile},
                             {"output-path", folder / "out"},
                             {"output-manifest-file", outputName}});
    }
    std::string written(const std::string& name) {
        return readFile(folder / ("out/" + name)).str();
    }
    static std::string failureOf(const OptionMap& map) {
        try {
            updateManifest(map, kNewHeader);
            return "none";
        } catch (const OfflineException& failure) {
            return std::to_string(failure.code()) + ": " + failure.text();
        }
    }

    TempDir folder;
    const std::string oldText = kzs::base64Encode({'o', 'l', 'd'});
    const std::string newText = kzs::base64Encode(kNewHeader);
};

TEST_F(ManifestUpdateTest, ReplacesTheInlineHeader) {
    const std::string path = manifest("clip.kzd", 1);
    const Bytes before = readFile(path);
    updateManifest(options(path), kNewHeader);
    const std::string text = written("clip_1.kzd");
    EXPECT_EQ(count(text, newText), 1);
    EXPECT_EQ(count(text, oldText), 0);
    EXPECT_EQ(count(text, "<drmAdditionalHeader"), 1);
    EXPECT_EQ(readFile(path), before);
    EXPECT_FALSE(fileExists(folder / "out/clip_1.drmmeta"));
}

TEST_F(ManifestUpdateTest, SeveralRenditionsShareOneHeaderAfterwards) {
    updateManifest(options(manifest("clip.kzd", 3)), kNewHeader);
    const std::string text = written("clip_1.kzd");
    EXPECT_EQ(count(text, "<drmAdditionalHeader"), 1);
    EXPECT_EQ(count(text, newText), 1);
    EXPECT_EQ(count(text, "drmAdditionalHeaderId="), 3);
}

TEST_F(ManifestUpdateTest, AnExternalHeaderGetsANewFile) {
    updateManifest(options(manifest("clip.kzd", 2, "clip.drmmeta")), kNewHeader);
    const std::string text = written("clip_1.kzd");
    EXPECT_EQ(count(text, "url=\"clip_1.drmmeta\""), 1);
    EXPECT_EQ(count(text, "clip.drmmeta"), 0);
    EXPECT_EQ(written("clip_1.drmmeta"), "new");
}

TEST_F(ManifestUpdateTest, NamesAreCountedUp) {
    const std::string path = manifest("a.kzd", 1);
    updateManifest(options(path), kNewHeader);
    updateManifest(options(path), kNewHeader);
    EXPECT_TRUE(fileExists(folder / "out/a_1.kzd"));
    EXPECT_TRUE(fileExists(folder / "out/a_2.kzd"));
    EXPECT_FALSE(fileExists(folder / "out/a.kzd"));
}

TEST_F(ManifestUpdateTest, ANameOfTheUsersOwnIsOverwritten) {
    const std::string path = manifest("a.kzd", 1);
    updateManifest(options(path, "elsewhere/mine.xml"), kNewHeader);
    const Bytes first = readFile(folder / "out/mine.kzd");
    writeFile(folder / "out/mine.kzd", kz::test::fill(100000, 'x'));
    updateManifest(options(path, "mine"), kNewHeader);
    EXPECT_EQ(readFile(folder / "out/mine.kzd"), first);
}

// The test for a free name is made on the old extension, so another file may be overwritten.
TEST_F(ManifestUpdateTest, AFreeNameIsLookedForBeforeTheExtensionChanges) {
    const std::string path = manifest("a.xml", 1);
    updateManifest(options(path), kNewHeader);
    writeFile(folder / "out/a_1.kzd", kz::test::text("old"));
    updateManifest(options(path), kNewHeader);
    EXPECT_FALSE(fileExists(folder / "out/a_2.kzd"));
    EXPECT_EQ(count(written("a_1.kzd"), newText), 1);
}

TEST_F(ManifestUpdateTest, AManifestIsNeeded) {
    EXPECT_EQ(failureOf(options("")), "23: no manifest file given");
    EXPECT_EQ(failureOf(options(folder / "none.kzd")),
              "1: " + (folder / "none.kzd") + " file does not exist");
    EXPECT_EQ(failureOf(options(folder.path())), "1: Path is not a file " + folder.path());
    EXPECT_FALSE(fileExists(folder / "out"));
}

TEST_F(ManifestUpdateTest, BadTimingFailsThisModeToo) {
    OptionMap map = options(manifest("a.kzd", 1));
    map["fragment-duration"] = 0.0;
    EXPECT_EQ(failureOf(map), "12: Standard Exception: invalid fragment duration specified");
}

TEST_F(ManifestUpdateTest, ABrokenManifestIsTold) {
    const std::string path = folder.write("a.kzd", kz::test::text("<manifest>"));
    EXPECT_EQ(failureOf(options(path)), "3: invalid input file " + path);
}

TEST_F(ManifestUpdateTest, UniquePathNeverAnswersThePathItself) {
    EXPECT_EQ(uniquePath(folder / "a.kzd"), folder / "a_1.kzd");
    EXPECT_EQ(uniquePath(folder / "a"), folder / "a_1");
    EXPECT_EQ(uniquePath(folder / "a.b.kzd"), folder / "a.b_1.kzd");
    folder.write("a_1.kzd", {});
    folder.write("a_2.kzd", {});
    EXPECT_EQ(uniquePath(folder / "a.kzd"), folder / "a_3.kzd");
}

}  // namespace
}  // namespace torvo::offline
