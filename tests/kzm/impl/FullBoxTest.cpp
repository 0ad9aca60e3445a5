#include <gtest/gtest.h>

#include "kzm/impl/BoxSupport.h"
#include "kzm/impl/FullBox.h"
#include "kzm/impl/UnknownFullBox.h"

namespace qlix::kzm::impl {
namespace {

using namespace kz::test;

TEST(FullBoxTest, WritesVersionAndFlagsBehindItsHeader) {
    WriteFile file;
    FullBox box(file.context(), fourCc("test"), 1, 0xAB000203);
    EXPECT_EQ(box.fieldsSize(), 0U);
    EXPECT_EQ(written(file, box), hexTable(R"(
        0   0000000c  size
        4   74657374  'test'
        8   01000203  version 1, flags 0x203
    )"));
}

TEST(FullBoxTest, ReadsVersionAndFlagsWhenItIsMade) {
    ReadFile file(fullBox("test", 2, 0x010203));
    const auto header = readBoxHeader(file.stream, nullptr);
    FullBox box(file.context(), *header);
    EXPECT_EQ(box.version(), 2);
    EXPECT_EQ(box.flags(), 0x010203U);

    file.memory.content = fullBox("test", 1, 7);
    file.stream.open();  // drops what was read ahead
    box.parse(nullptr, true);
    EXPECT_EQ(box.version(), 1);
    EXPECT_EQ(box.flags(), 7U);
}

TEST(FullBoxTest, ThrowsTwentyEightWhenTheBoxEndsBeforeItsFlags) {
    for (std::uint32_t size = 8; size < 12; ++size) {
        ReadFile file(fullBox("test", 1, 7).claiming(size));
        const auto header = readBoxHeader(file.stream, nullptr);
        EXPECT_EQ(codeThrownBy([&] { FullBox box(file.context(), *header); }), 28U) << size;
    }
}

TEST(FullBoxTest, ResetsToTwelveBytes) {
    ReadFile file(fullBox("test", 1, 7, fill(20, 0)));
    const auto header = readBoxHeader(file.stream, nullptr);
    FullBox box(file.context(), *header);
    EXPECT_EQ(box.size(), 32U);
    box.resetSize();
    EXPECT_EQ(box.size(), 12U);
    EXPECT_EQ(box.ownSize(), 12U);
}

TEST(FullBoxTest, CountsTwelveBytesOfHeaderEvenForALongOne) {
    // 16 bytes of header with a size of 64 bits, 4 of version and flags, 20 of fields: 40 bytes.
    ReadFile file(largeBox("test", u32(0) + fill(20, 0)));
    const auto header = readBoxHeader(file.stream, nullptr);
    const FullBox box(file.context(), *header);
    EXPECT_EQ(box.ownSize(), 40U);
    EXPECT_EQ(box.fieldsSize(), 28U);
}

TEST(UnknownFullBoxTest, WritesThePayloadBehindTwelveBytesAndGivesItBackOnce) {
    const Bytes payload = text("payload");
    int released = 0;
    {
        WriteFile file;
        UnknownFullBox box(
            file.context(), fourCc("abst"), payload.data(), payload.size(),
            [](void* context, const std::uint8_t*) { ++*static_cast<int*>(context); }, &released);
        EXPECT_EQ(written(file, box), hexTable(R"(
            0   00000013        size 12 + 7
            4   61627374        'abst'
            8   00000000        version 0, flags 0
            12  7061796c6f6164  payload
        )"));
        EXPECT_EQ(released, 0);
    }
    EXPECT_EQ(released, 1);
}

TEST(UnknownFullBoxTest, IsEmptyWithoutAPayload) {
    WriteFile file;
    UnknownFullBox box(file.context(), fourCc("abst"), nullptr, 5, nullptr, nullptr);
    EXPECT_EQ(written(file, box), fullBox("abst", 0, 0));
}

}  // namespace
}  // namespace qlix::kzm::impl
