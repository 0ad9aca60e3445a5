#include <gtest/gtest.h>

#include "kzm/impl/BoxSupport.h"
#include "kzm/impl/DinfBox.h"
#include "kzm/impl/DrefBox.h"
#include "kzm/impl/UrlBox.h"

namespace qlix::kzm::impl {
namespace {

using namespace kz::test;

TEST(DinfBoxTest, RefersToTheSameFile) {
    WriteFile file;
    DinfBox box(file.context());
    EXPECT_EQ(written(file, box), hexTable(R"(
        0   00000024  size 36
        4   64696e66  'dinf'
        8   0000001c  size 28
        12  64726566  'dref'
        16  00000000  version 0, flags 0
        20  00000001  one entry
        24  0000000c  size 12
        28  75726c20  'url '
        32  00000001  version 0, flags 1: the same file
    )"));
    EXPECT_NE(box.dref(), nullptr);
}

TEST(DrefBoxTest, ReadsItsEntriesAsChildren) {
    ReadFile file(fullBox("dref", 1, 0, u32(2), fullBox("url ", 0, 0, text("x")), box("urn ")));
    const auto read = readAs<DrefBox>(file);
    EXPECT_EQ(read->childCount(), 2U);
    EXPECT_NE(dynamic_cast<UrlBox*>(read->child(0)), nullptr);
}

TEST(DrefBoxTest, RefusesVersionTwoWhenItIsMade) {
    ReadFile file(fullBox("dref", 2, 0, u32(0)));
    EXPECT_EQ(codeThrownBy([&] { file.make(); }), 1029U);
}

}  // namespace
}  // namespace qlix::kzm::impl
