#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "kzm/impl/BoxSupport.h"
#include "kzm/impl/MoovBox.h"
#include "kzm/impl/RootBox.h"
#include "support/TempDir.h"

namespace qlix::kzm::impl {
namespace {

using namespace kz::test;

std::vector<std::string> movieFiles() {
    std::vector<std::string> out;
    for (const auto& each : std::filesystem::directory_iterator(KZ_TEST_DATA_DIR "/media")) {
        const std::string extension = each.path().extension().string();
        if (extension == ".mp4" || extension == ".m4a") out.push_back(each.path().string());
    }
    return out;
}

std::uint64_t samplesIn(const SttsBox& table) {
    std::uint64_t out = 0;
    for (const SttsRow& row : table.rows()) out += row.count;
    return out;
}

TEST(MovieFilesTest, AreReadToTheirEndWithTablesThatAgree) {
    const std::vector<std::string> files = movieFiles();
    ASSERT_FALSE(files.empty());
    for (const std::string& path : files) {
        SCOPED_TRACE(path);
        ReadFile file(readFile(path));
        RootBox root(file.context());
        while (root.child(root.childCount()) != nullptr) {
        }
        EXPECT_TRUE(file.warnings.empty());
        EXPECT_EQ(root.size(), file.memory.content.size());
        ASSERT_NE(root.moov(), nullptr);
        for (const TrakBox* trak : root.moov()->tracks()) {
            const StblBox& stbl = *trak->stbl();
            EXPECT_EQ(samplesIn(*stbl.stts()), stbl.stsz()->sampleCount());
            EXPECT_FALSE(stbl.stsd()->entries().empty());
            EXPECT_EQ(stbl.stsz()->sampleCount() == 0, root.moov()->isFragmented());
            EXPECT_GT(trak->mdhd()->media().timescale, 0U);
        }
    }
}

}  // namespace
}  // namespace qlix::kzm::impl
