#include <gtest/gtest.h>

#include "kzm/impl/BoxSupport.h"
#include "kzm/impl/HmhdBox.h"
#include "kzm/impl/NmhdBox.h"
#include "kzm/impl/SmhdBox.h"
#include "kzm/impl/VmhdBox.h"

namespace qlix::kzm::impl {
namespace {

using namespace kz::test;

TEST(VmhdBoxTest, WritesZerosAndTheFlagOne) {
    WriteFile file;
    VmhdBox box(file.context());
    EXPECT_EQ(written(file, box), fullBox("vmhd", 0, 1, fill(8, 0)));
}

TEST(VmhdBoxTest, ReadsModeAndColors) {
    ReadFile file(fullBox("vmhd", 0, 1, u16(1), u16(2), u16(3), u16(4)));
    const auto read = readAs<VmhdBox>(file);
    EXPECT_EQ(read->graphicsMode(), 1);
    EXPECT_EQ(read->color(0), 2);
    EXPECT_EQ(read->color(2), 4);
    EXPECT_EQ(codesWhenCut(fullBox("vmhd", 0, 1, fill(8, 0))), codesOfAFullBox(20));
}

TEST(MediaHeaderTest, WritesTheHeadersOfOtherMedia) {
    WriteFile sound;
    SmhdBox smhd(sound.context());
    EXPECT_EQ(written(sound, smhd), fullBox("smhd", 0, 0, fill(4, 0)));
    WriteFile hint;
    HmhdBox hmhd(hint.context());
    EXPECT_EQ(written(hint, hmhd), fullBox("hmhd", 0, 0, fill(16, 0)));
    WriteFile other;
    NmhdBox nmhd(other.context());
    EXPECT_EQ(written(other, nmhd), fullBox("nmhd", 0, 0));
}

TEST(SmhdBoxTest, IsReadWithoutAnyFields) {
    ReadFile file(fullBox("smhd", 0, 0));
    EXPECT_EQ(codeThrownBy([&] { file.read(); }), 0U);
}

}  // namespace
}  // namespace qlix::kzm::impl
