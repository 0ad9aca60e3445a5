#include <gtest/gtest.h>

#include "kzm/impl/BoxSupport.h"
#include "kzm/impl/HintBox.h"
#include "kzm/impl/TrefBox.h"

namespace qlix::kzm::impl {
namespace {

using namespace kz::test;

TEST(HintBoxTest, ListsTheTracksItRefersTo) {
    WriteFile file;
    TrefBox box(file.context(), std::vector<std::uint32_t>{1, 2});
    EXPECT_EQ(written(file, box), hexTable(R"(
        0   00000018  size 24
        4   74726566  'tref'
        8   00000010  size 16
        12  68696e74  'hint'
        16  00000001  track 1
        20  00000002  track 2
    )"));
    ASSERT_NE(box.hint(), nullptr);
    EXPECT_TRUE(box.hint()->refersTo(2));
    EXPECT_FALSE(box.hint()->refersTo(3));
}

TEST(HintBoxTest, ReadsItsTracks) {
    ReadFile file(box("tref", box("hint", u32(7), u32(1))));
    const auto read = readAs<TrefBox>(file);
    ASSERT_NE(read->hint(), nullptr);
    EXPECT_TRUE(read->hint()->refersTo(7));
    EXPECT_TRUE(read->hint()->refersTo(1));
    EXPECT_EQ(read->hint()->trackIds().size(), 2U);
    EXPECT_TRUE(file.warnings.empty());
}

TEST(HintBoxTest, WarnsOfABodyThatIsNoMultipleOfFour) {
    ReadFile file(box("hint", u32(7), u8(1)));
    EXPECT_EQ(readAs<HintBox>(file)->trackIds().size(), 1U);
    EXPECT_EQ(file.warnings, std::vector<std::uint32_t>{3073});
}

}  // namespace
}  // namespace qlix::kzm::impl
