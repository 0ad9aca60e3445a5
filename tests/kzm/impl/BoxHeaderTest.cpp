#include <gtest/gtest.h>

#include "kzm/impl/BoxHeader.h"
#include "kzm/impl/BoxSupport.h"

namespace qlix::kzm::impl {
namespace {

using namespace kz::test;

TEST(BoxHeaderTest, ReadsSizeTypeAndPlace) {
    ReadFile file(u32(0xFFFF) + box("free", fill(12, 0)) + fill(3, 0));
    file.stream.seek(4);
    const auto header = readBoxHeader(file.stream, nullptr);
    ASSERT_TRUE(header);
    EXPECT_EQ(header->type, fourCc("free"));
    EXPECT_EQ(header->size, 20U);
    EXPECT_EQ(header->start, 4U);
    EXPECT_EQ(header->end, 24U);
    EXPECT_EQ(header->headerSize(), 8U);
    EXPECT_FALSE(header->isLarge);
    EXPECT_FALSE(header->isToEnd);
    EXPECT_EQ(file.stream.tell(), 12U);
}

TEST(BoxHeaderTest, TakesA64BitSizeAfterTheSizeOne) {
    ReadFile file(largeBox("free", fill(4, 0)));
    const auto header = readBoxHeader(file.stream, nullptr);
    ASSERT_TRUE(header);
    EXPECT_TRUE(header->isLarge);
    EXPECT_EQ(header->size, 20U);
    EXPECT_EQ(header->end, 20U);
    EXPECT_EQ(header->headerSize(), 16U);
}

TEST(BoxHeaderTest, RunsToTheEndOfTheFileWithTheSizeZero) {
    ReadFile file(box("free") + box("free", fill(30, 1)).claiming(0));
    file.stream.seek(8);
    const auto header = readBoxHeader(file.stream, nullptr);
    ASSERT_TRUE(header);
    EXPECT_TRUE(header->isToEnd);
    EXPECT_EQ(header->size, 38U);
    EXPECT_EQ(header->end, 46U);
}

TEST(BoxHeaderTest, WarnsOfOneToSevenStrayBytes) {
    for (std::size_t stray = 0; stray < 8; ++stray) {
        ReadFile file(box("free").cutTo(stray));
        EXPECT_FALSE(readBoxHeader(file.stream, nullptr));
        const std::vector<std::uint32_t> expected(stray > 0 ? 1U : 0U, 3073U);
        EXPECT_EQ(file.warnings, expected) << stray;
    }
}

TEST(BoxHeaderTest, EndsWith1028WhenTheHandlerRefusesStrayBytes) {
    ReadFile file(box("free").cutTo(5));
    file.goOn = false;
    EXPECT_EQ(codeThrownBy([&] { readBoxHeader(file.stream, nullptr); }), 1028U);
}

TEST(BoxHeaderTest, KeepsAnMdatBeyondTheEndOfTheFileAndRefusesOthers) {
    ReadFile data(box("mdat", fill(4, 0)).claiming(13));
    const auto header = readBoxHeader(data.stream, nullptr);
    ASSERT_TRUE(header);
    EXPECT_EQ(header->end, 13U);
    EXPECT_EQ(data.warnings, std::vector<std::uint32_t>{3074});

    ReadFile other(box("free", fill(4, 0)).claiming(13));
    EXPECT_EQ(codeThrownBy([&] { readBoxHeader(other.stream, nullptr); }), 27U);
}

TEST(BoxHeaderTest, ClampsAChildThatOverrunsItsParent) {
    ReadFile file(box("moov", box("free", fill(4, 0)).claiming(16)) + fill(16, 0));
    const auto parent = readBoxHeader(file.stream, nullptr);
    const auto child = readBoxHeader(file.stream, &*parent);
    ASSERT_TRUE(child);
    EXPECT_EQ(child->size, 16U);
    EXPECT_EQ(child->end, 20U);
    EXPECT_EQ(file.warnings, std::vector<std::uint32_t>{3075});
}

TEST(BoxHeaderTest, RefusesASizeBelowItsOwnHeader) {
    for (std::uint32_t size = 2; size < 8; ++size) {
        ReadFile file(box("free", fill(20, 0)).claiming(size));
        EXPECT_EQ(codeThrownBy([&] { readBoxHeader(file.stream, nullptr); }), 27U) << size;
    }
    ReadFile large(u32(1) + text("free") + u64(15) + fill(8, 0));
    EXPECT_EQ(codeThrownBy([&] { readBoxHeader(large.stream, nullptr); }), 27U);
    ReadFile extended(box("uuid", fill(30, 0)).claiming(23));
    EXPECT_EQ(codeThrownBy([&] { readBoxHeader(extended.stream, nullptr); }), 27U);
}

TEST(BoxHeaderTest, FindsNoBoxWhereTheEndOverflows) {
    ReadFile file(box("free") + u32(1) + text("free") + u64(0xFFFFFFFFFFFFFFFF) + fill(8, 0));
    file.stream.seek(8);
    EXPECT_FALSE(readBoxHeader(file.stream, nullptr));
}

TEST(BoxHeaderTest, TakesTheCodeOfATemplateExtendedType) {
    ReadFile file(uuidBox(text("moov") + hex("00110010800000AA00389B71"), fill(8, 0)));
    const auto header = readBoxHeader(file.stream, nullptr);
    ASSERT_TRUE(header);
    EXPECT_EQ(header->type, fourCc("moov"));
    EXPECT_EQ(header->headerSize(), 24U);
}

TEST(BoxHeaderTest, KeepsAnotherExtendedType) {
    ReadFile file(uuidBox(hex("BE7ACFCB97A942E89C71999491E3AFAC"), fill(8, 0)));
    const auto header = readBoxHeader(file.stream, nullptr);
    ASSERT_TRUE(header);
    EXPECT_EQ(header->type, fourCc("uuid"));
    EXPECT_EQ(header->extendedType, kXmpType);
}

TEST(BoxHeaderTest, EndsWithinABoxWhereverTheFileIsCut) {
    const Bytes whole = uuidBox(pattern(16, 3), fill(8, 0));
    for (std::size_t cut = 8; cut < whole.size(); ++cut) {
        ReadFile file(whole.cutTo(cut));
        const std::uint32_t code = codeThrownBy([&] { readBoxHeader(file.stream, nullptr); });
        EXPECT_EQ(code, cut < 24 ? 5U : 27U) << cut;
    }
}

}  // namespace
}  // namespace qlix::kzm::impl
