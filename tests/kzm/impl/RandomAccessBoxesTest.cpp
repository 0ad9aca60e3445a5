#include <gtest/gtest.h>

#include "kzm/impl/AfraBox.h"
#include "kzm/impl/BoxSupport.h"
#include "kzm/impl/MfraBox.h"
#include "kzm/impl/MfroBox.h"
#include "kzm/impl/TfraBox.h"

namespace qlix::kzm::impl {
namespace {

using namespace kz::test;

/// Reads a `tfra`, which the factory doesn't make.
TfraBox readTfra(ReadFile& file) {
    const auto header = readBoxHeader(file.stream, nullptr);
    return TfraBox(file.context(), header.value());
}

TEST(AfraBoxTest, HasLongIdsAndOffsetsAndNoGlobalEntries) {
    WriteFile file;
    AfraBox box(file.context(), 1000);
    EXPECT_EQ(box.size(), 21U);
    box.addEntry(0x100000028, 0x200000030);
    EXPECT_EQ(box.size(), 37U);
    EXPECT_EQ(written(file, box), hexTable(R"(
        0   00000025          size 21 + 16
        4   61667261          'afra'
        8   00000000          version 0, flags 0
        12  c0                long ids, long offsets
        13  000003e8          timescale
        17  00000001          entry count
        21  0000000100000028  time
        29  0000000200000030  offset
    )"));
}

TEST(AfraBoxTest, MovesAllOffsetsAndRewritesThem) {
    WriteFile file;
    AfraBox box(file.context(), 1000);
    box.addEntry(1, 16);
    box.addEntry(2, 20);
    box.write();
    box.moveOffsets(0x100000000);
    box.write();
    EXPECT_EQ(file.bytes().slice(17, 36), hexTable(R"(
        0   00000002          entry count
        4   0000000000000001  time
        12  0000000100000010  offset
        20  0000000000000002  time
        28  0000000100000014  offset
    )"));
    EXPECT_EQ(file.bytes().size(), 53U);
}

TEST(AfraBoxTest, StaysOpaqueInAnInput) {
    ReadFile file(fullBox("afra", 0, 0, u8(0xC0), u32(1000), u32(0xFFFFFFFF)));
    const BoxPtr box = file.read();
    const auto& afra = dynamic_cast<AfraBox&>(*box);
    EXPECT_EQ(afra.size(), 21U);
    EXPECT_TRUE(afra.entries().empty());
}

TEST(TfraBoxTest, IsWrittenWithWideTimesAndFourByteNumbers) {
    WriteFile file;
    TfraBox box(file.context(), 2);
    box.addEntry({0x100000001, 0x200000002, 2, 3, 4});
    EXPECT_EQ(written(file, box), hexTable(R"(
        0   00000034          size 24 + 28
        4   74667261          'tfra'
        8   01000000          version 1, flags 0
        12  00000002          track id
        16  0000003f          lengths
        20  00000001          entry count
        24  0000000100000001  time
        32  0000000200000002  moof offset
        40  00000002          traf number
        44  00000003          trun number
        48  00000004          sample number
    )"));
}

TEST(TfraBoxTest, HasNarrowTimesInVersionZero) {
    WriteFile file;
    TfraBox box(file.context(), 2, 0);
    box.addEntry({1, 2, 3, 4, 5});
    EXPECT_EQ(written(file, box).slice(20, 24),
              u32(1) + u32(1) + u32(2) + u32(3) + u32(4) + u32(5));
}

TEST(TfraBoxTest, KeepsTheLowByteOfTheTrackId) {
    WriteFile file;
    TfraBox box(file.context(), 0x1FE);
    EXPECT_EQ(box.trackId(), 0xFE);
    EXPECT_EQ(written(file, box).slice(12, 4), u32(0xFE));
}

TEST(TfraBoxTest, ReadsNumbersOfTheLengthsItNames) {
    // traf numbers of 1 byte, trun numbers of 2, sample numbers of 3
    ReadFile file(fullBox("tfra", 0, 0, u32(7), u32(0x06), u32(1), u32(11), u32(12), u8(13),
                          u16(0x0114), u24(0x010215)));
    TfraBox box = readTfra(file);
    box.parse(nullptr, true);
    EXPECT_EQ(box.trackId(), 7);
    ASSERT_EQ(box.entries().size(), 1U);
    EXPECT_EQ(box.entries()[0].time, 11U);
    EXPECT_EQ(box.entries()[0].moofOffset, 12U);
    EXPECT_EQ(box.entries()[0].trafNumber, 13U);
    EXPECT_EQ(box.entries()[0].trunNumber, 0x114U);
    EXPECT_EQ(box.entries()[0].sampleNumber, 0x10215U);
}

TEST(TfraBoxTest, ThrowsTwentyWhenALengthIsFourOrMore) {
    ReadFile file(fullBox("tfra", 1, 0, u32(7), u32(0x40), u32(0)));
    TfraBox box = readTfra(file);
    EXPECT_EQ(codeThrownBy([&] { box.parse(nullptr, true); }), 20U);
}

TEST(TfraBoxTest, ChecksTheCountBeforeItTakesMemory) {
    const auto codeOfCount = [](std::uint32_t count) {
        ReadFile file(fullBox("tfra", 1, 0, u32(7), u32(0x3F), u32(count), fill(28, 0)));
        TfraBox box = readTfra(file);
        return codeThrownBy([&] { box.parse(nullptr, true); });
    };
    EXPECT_EQ(codeOfCount(0xFFFFFFFF), 31U);
    EXPECT_EQ(codeOfCount(100000000), 27U);
    EXPECT_EQ(codeOfCount(2), 27U);
    EXPECT_EQ(codeOfCount(1), 0U);
}

TEST(MfraBoxTest, EndsWithItsOwnSize) {
    WriteFile file;
    MfraBox box(file.context());
    EXPECT_FALSE(box.verifyChildren());
    box.addChild(makeBox<TfraBox>(file.context(), 1U));
    box.write();
    EXPECT_EQ(file.bytes(), hexTable(R"(
        0   00000030  size 8 + 24 + 16
        4   6d667261  'mfra'
        8   00000018  size
        12  74667261  'tfra'
        16  01000000  version 1
        20  00000001  track id
        24  0000003f  lengths
        28  00000000  entry count
        32  00000010  size
        36  6d66726f  'mfro'
        40  00000000  version 0
        44  00000030  size of the mfra
    )"));
    EXPECT_TRUE(box.verifyChildren());
}

TEST(MfraBoxTest, IsOpaqueInAnInput) {
    for (const char* code : {"mfra", "mfro", "tfra"}) {
        ReadFile file(fullBox(code, 0, 0, u32(1), u32(2)));
        const BoxPtr made = file.read();
        EXPECT_EQ(typeid(*made), typeid(Box)) << code;
        EXPECT_EQ(made->size(), 20U) << code;
    }
}

}  // namespace
}  // namespace qlix::kzm::impl
