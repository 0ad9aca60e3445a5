#include <cstddef>
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "kzm/impl/BoxSupport.h"
#include "kzm/impl/HdlrBox.h"

namespace qlix::kzm::impl {
namespace {

using namespace kz::test;

TEST(HdlrBoxTest, WritesTheNameAsGiven) {
    WriteFile file;
    HdlrBox box(file.context(), fourCc("vide"), "Abc");
    EXPECT_EQ(written(file, box), hexTable(R"(
        0   00000023  size 35
        4   68646c72  'hdlr'
        8   00000000  version 0, flags 0
        12  00000000  pre-defined
        16  76696465  'vide'
        20  000000000000000000000000  reserved
        32  416263    name without a terminator
    )"));
    WriteFile terminated;
    HdlrBox other(terminated.context(), fourCc("vide"), std::string_view("Abc\0", 4));
    EXPECT_EQ(written(terminated, other).size(), 36U);
}

TEST(HdlrBoxTest, AddsATerminatorWhenReading) {
    const Bytes head = u32(0) + text("soun") + fill(12, 0);
    const std::pair<Bytes, std::string> cases[] = {
        {text("Abc"), std::string("Abc\0", 4)},
        {text("Abc") + u8(0), std::string("Abc\0", 4)},
        {Bytes(), std::string(1, '\0')},
    };
    for (const auto& each : cases) {
        ReadFile file(fullBox("hdlr", 0, 0, head, each.first));
        const auto read = readAs<HdlrBox>(file);
        EXPECT_EQ(read->handler(), fourCc("soun"));
        EXPECT_EQ(read->name(), each.second);
    }
}

TEST(HdlrBoxTest, RefusesANameAboveTheLimit) {
    constexpr std::size_t kSize = 32 + 100000001;
    Bytes bytes = fullBox("hdlr", 0, 0, fill(20, 0)).claiming(kSize);
    bytes.resize(kSize);
    ReadFile file(std::move(bytes));
    EXPECT_EQ(codeThrownBy([&] { file.read(); }), 9U);
}

TEST(HdlrBoxTest, NeedsTwentyBytes) {
    EXPECT_EQ(codesWhenCut(fullBox("hdlr", 0, 0, fill(20, 0))), codesOfAFullBox(32));
}

}  // namespace
}  // namespace qlix::kzm::impl
