#include <gtest/gtest.h>

#include "kzm/impl/BoxSupport.h"
#include "kzm/impl/FtypBox.h"

namespace qlix::kzm::impl {
namespace {

using namespace kz::test;

TEST(FtypBoxTest, WritesTheBrandsOfThisSystem) {
    WriteFile file;
    FtypBox box(file.context());
    EXPECT_EQ(box.size(), 16U);
    box.addCompatibleBrand(fourCc("isom"));
    box.addCompatibleBrand(fourCc("mp42"));
    EXPECT_EQ(written(file, box), hexTable(R"(
        0   00000018  size 24
        4   66747970  'ftyp'
        8   6b7a6d20  major brand 'kzm '
        12  00000001  minor version 1
        16  69736f6d  'isom'
        20  6d703432  'mp42'
    )"));
}

TEST(FtypBoxTest, ReadsItsBrands) {
    ReadFile file(box("ftyp", text("M4V "), u32(7), text("isommp42")));
    const auto read = readAs<FtypBox>(file);
    EXPECT_EQ(read->majorBrand(), fourCc("M4V "));
    EXPECT_EQ(read->minorVersion(), 7U);
    EXPECT_EQ(std::vector<std::uint32_t>(read->compatibleBrands().begin(),
                                         read->compatibleBrands().end()),
              (std::vector<std::uint32_t>{fourCc("isom"), fourCc("mp42")}));
    EXPECT_TRUE(file.warnings.empty());
}

TEST(FtypBoxTest, KeepsNoBrandsOfAListWithAStrayByte) {
    ReadFile file(box("ftyp", text("M4V "), u32(7), text("isommp42x")));
    const auto read = readAs<FtypBox>(file);
    EXPECT_EQ(read->majorBrand(), fourCc("M4V "));
    EXPECT_TRUE(read->compatibleBrands().empty());
    EXPECT_EQ(file.warnings, std::vector<std::uint32_t>{3073});
}

TEST(FtypBoxTest, NeedsEightBytes) {
    const auto codes = codesWhenCut(box("ftyp", fill(8, 0)));
    EXPECT_EQ(codes, std::vector<std::uint32_t>(8, 27));
}

}  // namespace
}  // namespace qlix::kzm::impl
