#include <gtest/gtest.h>

#include "kzm/impl/BoxSupport.h"
#include "kzm/impl/MehdBox.h"
#include "kzm/impl/MfhdBox.h"
#include "kzm/impl/MoofBox.h"
#include "kzm/impl/MvexBox.h"
#include "kzm/impl/TfhdBox.h"
#include "kzm/impl/TrexBox.h"

namespace qlix::kzm::impl {
namespace {

using namespace kz::test;

/// The code that reading `bytes` cut at every length from the full box header on gives.
void expectTooShortAtEveryCut(const Bytes& bytes) {
    for (std::size_t size = 12; size < bytes.size(); ++size) {
        ReadFile file(bytes.cutTo(size).patched(0, u32(size)));
        EXPECT_EQ(codeThrownBy([&] { file.read(); }), 27U) << "cut to " << size;
    }
}

TEST(MfhdBoxTest, HoldsTheSequenceNumber) {
    WriteFile file;
    MfhdBox box(file.context(), 7);
    EXPECT_EQ(written(file, box), hexTable(R"(
        0   00000010  size
        4   6d666864  'mfhd'
        8   00000000  version 0, flags 0
        12  00000007  sequence number
    )"));
}

TEST(MfhdBoxTest, ReadsTheSequenceNumber) {
    ReadFile file(fullBox("mfhd", 0, 0, u32(0x80000001)));
    const BoxPtr box = file.read();
    EXPECT_EQ(dynamic_cast<MfhdBox&>(*box).sequenceNumber(), 0x80000001U);
    EXPECT_EQ(box->size(), 16U);
}

TEST(MfhdBoxTest, ThrowsTwentySevenWhenTheNumberIsCut) {
    expectTooShortAtEveryCut(fullBox("mfhd", 0, 0, u32(7)));
}

TEST(MoofBoxTest, IsMadeWithItsHeader) {
    WriteFile file;
    MoofBox box(file.context(), 1);
    EXPECT_EQ(written(file, box), hexTable(R"(
        0   00000018  size
        4   6d6f6f66  'moof'
        8   00000010  size
        12  6d666864  'mfhd'
        16  00000000  version 0, flags 0
        20  00000001  sequence number
    )"));
    ASSERT_NE(box.mfhd(), nullptr);
    EXPECT_TRUE(box.verifyChildren());
}

TEST(MoofBoxTest, NeedsExactlyOneHeader) {
    const IsoBox mfhd = fullBox("mfhd", 0, 0, u32(1));
    for (const IsoBox& bytes : {box("moof"), box("moof", mfhd, mfhd)}) {
        ReadFile file(bytes);
        const BoxPtr moof = file.make();
        moof->loadTree(BoxFactory::standard());
        EXPECT_EQ(codeThrownBy([&] { moof->parse(nullptr, true); }), 14U);
    }
}

TEST(MehdBoxTest, IsWrittenWithSixtyFourBits) {
    WriteFile file;
    MehdBox box(file.context(), 0x100000002);
    EXPECT_EQ(written(file, box), hexTable(R"(
        0   00000014          size
        4   6d656864          'mehd'
        8   01000000          version 1, flags 0
        12  0000000100000002  duration
    )"));
    box.setDuration(3);
    box.write();
    EXPECT_EQ(file.bytes().slice(12, 8), u64(3));
    EXPECT_EQ(file.bytes().size(), 20U);
}

TEST(MehdBoxTest, ReadsBothVersions) {
    ReadFile narrow(fullBox("mehd", 0, 0, u32(0xFFFFFFFF)));
    const BoxPtr first = narrow.read();
    EXPECT_EQ(dynamic_cast<MehdBox&>(*first).duration(), 0xFFFFFFFFU);
    EXPECT_EQ(first->size(), 16U);

    ReadFile wide(fullBox("mehd", 1, 0, u64(0x100000002)));
    const BoxPtr second = wide.read();
    EXPECT_EQ(dynamic_cast<MehdBox&>(*second).duration(), 0x100000002U);
    EXPECT_EQ(second->size(), 20U);
}

TEST(MehdBoxTest, ThrowsTwentySevenWhenTheDurationIsCut) {
    expectTooShortAtEveryCut(fullBox("mehd", 0, 0, u32(1)));
    expectTooShortAtEveryCut(fullBox("mehd", 1, 0, u64(1)));
}

TEST(TrexBoxTest, WritesOnesForTheDefaults) {
    WriteFile file;
    TrexBox box(file.context(), 3);
    EXPECT_EQ(box.defaultSize(), 0U);
    EXPECT_EQ(written(file, box), hexTable(R"(
        0   00000020  size
        4   74726578  'trex'
        8   00000000  version 0, flags 0
        12  00000003  track id
        16  00000001  description index
        20  00000001  duration
        24  00000001  size
        28  00000001  flags
    )"));
}

TEST(TrexBoxTest, ReadsAllFiveFields) {
    ReadFile file(fullBox("trex", 0, 0, u32(5), u32(6), u32(7), u32(8), u32(9)));
    const BoxPtr box = file.read();
    const auto& trex = dynamic_cast<TrexBox&>(*box);
    EXPECT_EQ(trex.trackId(), 5U);
    EXPECT_EQ(trex.descriptionIndex(), 6U);
    EXPECT_EQ(trex.defaultDuration(), 7U);
    EXPECT_EQ(trex.defaultSize(), 8U);
    EXPECT_EQ(trex.defaultFlags(), 9U);
    EXPECT_EQ(box->size(), 32U);
}

TEST(TrexBoxTest, ThrowsTwentySevenBelowTwentyBytes) {
    expectTooShortAtEveryCut(fullBox("trex", 0, 0, u32(5), u32(6), u32(7), u32(8), u32(9)));
}

TEST(MvexBoxTest, BeginsWithItsHeader) {
    WriteFile file;
    MvexBox box(file.context(), 0);
    box.addChild(makeBox<TrexBox>(file.context(), 1U));
    EXPECT_EQ(written(file, box), hexTable(R"(
        0   0000003c                                  size
        4   6d766578                                  'mvex'
        8   000000146d656864                          'mehd'
        16  010000000000000000000000                  version 1, duration 0
        28  0000002074726578                          'trex'
        36  0000000000000001                          track id
        44  00000001000000010000000100000001          the four ones
    )"));
}

TEST(MvexBoxTest, IsNeverRefusedForItsChildren) {
    ReadFile file(box("mvex"));
    const BoxPtr mvex = file.make();
    EXPECT_TRUE(mvex->verifyChildren());
}

TEST(MvexBoxTest, FindsTheFirstDefaultsOfATrack) {
    const auto trex = [](int track, int duration) {
        return fullBox("trex", 0, 0, u32(track), u32(1), u32(duration), u32(0), u32(0));
    };
    ReadFile file(
        box("mvex", fullBox("mehd", 0, 0, u32(9)), trex(2, 10), trex(1, 20), trex(2, 30)));
    const BoxPtr made = file.read();
    auto& mvex = dynamic_cast<MvexBox&>(*made);
    ASSERT_NE(mvex.mehd(), nullptr);
    EXPECT_EQ(mvex.mehd()->duration(), 9U);
    ASSERT_NE(mvex.defaultsOf(2), nullptr);
    EXPECT_EQ(mvex.defaultsOf(2)->defaultDuration(), 10U);
    EXPECT_EQ(mvex.defaultsOf(1)->defaultDuration(), 20U);
    EXPECT_EQ(mvex.defaultsOf(3), nullptr);
}

TEST(TfhdBoxTest, IsWrittenWithBaseAndDescription) {
    WriteFile file;
    TfhdBox box(file.context(), 2, 0x100000010, 1);
    EXPECT_EQ(written(file, box), hexTable(R"(
        0   0000001c          size
        4   74666864          'tfhd'
        8   00000003          version 0, flags 3
        12  00000002          track id
        16  0000000100000010  base data offset
        24  00000001          description index
    )"));
}

TEST(TfhdBoxTest, RewritesTheBaseInPlace) {
    WriteFile file;
    TfhdBox box(file.context(), 2, 16, 1);
    box.write();
    box.setBaseDataOffset(0x1234);
    box.setDescriptionIndex(9);  // not rewritten
    box.write();
    EXPECT_EQ(file.bytes().slice(12, 16), u32(2) + u64(0x1234) + u32(1));
    EXPECT_EQ(file.bytes().size(), 28U);
}

TEST(TfhdBoxTest, HasNoBaseToRewriteWithoutItsFlag) {
    WriteFile file;
    TfhdBox box(file.context(), 2, 16, 1, TfhdBox::kDescriptionIndexPresent);
    const Bytes before = written(file, box);
    EXPECT_EQ(before.size(), 20U);
    box.setBaseDataOffset(0x1234);
    box.write();
    EXPECT_EQ(file.bytes(), before);
}

TEST(TfhdBoxTest, WritesTheDefaultsAsOne) {
    WriteFile file;
    TfhdBox box(file.context(), 2, 16, 5, 0x3B);
    box.fillIn(0, 100, 200, 300);
    EXPECT_EQ(written(file, box), hexTable(R"(
        0   00000028          size
        4   74666864          'tfhd'
        8   0000003b          version 0, all five flags
        12  00000002          track id
        16  0000000000000010  base data offset
        24  00000005          description index
        28  00000001          duration
        32  00000001          size
        36  00000001          flags
    )"));
}

TEST(TfhdBoxTest, ReadsWhatItsFlagsName) {
    ReadFile file(
        fullBox("tfhd", 0, 0x3B, u32(2), u64(0x100000010), u32(5), u32(6), u32(7), u32(8)));
    const BoxPtr box = file.read();
    const auto& tfhd = dynamic_cast<TfhdBox&>(*box);
    EXPECT_EQ(tfhd.trackId(), 2U);
    EXPECT_EQ(tfhd.baseDataOffset(), 0x100000010U);
    EXPECT_EQ(tfhd.descriptionIndex(), 5U);
    EXPECT_EQ(tfhd.defaultDuration(), 6U);
    EXPECT_EQ(tfhd.defaultSize(), 7U);
    EXPECT_EQ(tfhd.defaultFlags(), 8U);
}

TEST(TfhdBoxTest, HoldsAllOnesForWhatIsAbsent) {
    ReadFile file(fullBox("tfhd", 0, 0x10, u32(2), u32(7)));
    const BoxPtr box = file.read();
    auto& tfhd = dynamic_cast<TfhdBox&>(*box);
    EXPECT_EQ(tfhd.descriptionIndex(), 0xFFFFFFFFU);
    EXPECT_EQ(tfhd.defaultDuration(), 0xFFFFFFFFU);
    EXPECT_EQ(tfhd.defaultSize(), 7U);
    EXPECT_EQ(tfhd.defaultFlags(), 0xFFFFFFFFU);

    tfhd.fillIn(1, 2, 3, 4);
    EXPECT_EQ(tfhd.descriptionIndex(), 1U);
    EXPECT_EQ(tfhd.defaultDuration(), 2U);
    EXPECT_EQ(tfhd.defaultSize(), 7U);
    EXPECT_EQ(tfhd.defaultFlags(), 4U);
}

TEST(TfhdBoxTest, ThrowsTwentySevenWhenAFieldIsCut) {
    expectTooShortAtEveryCut(
        fullBox("tfhd", 0, 0x3B, u32(2), u64(16), u32(5), u32(6), u32(7), u32(8)));
}

}  // namespace
}  // namespace qlix::kzm::impl
