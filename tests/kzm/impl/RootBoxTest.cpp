#include <gtest/gtest.h>

#include "kzm/impl/BoxSupport.h"
#include "kzm/impl/HeaderFixtures.h"
#include "kzm/impl/MoovBox.h"
#include "kzm/impl/RootBox.h"
#include "kzm/impl/UuidBox.h"

namespace qlix::kzm::impl {
namespace {

using namespace kz::test;

Bytes plainMovie() { return movie(track("vide", {})); }

TEST(RootBoxTest, HasNoChildInAnEmptyFile) {
    ReadFile file((Bytes()));
    RootBox root(file.context());
    EXPECT_EQ(root.child(0), nullptr);
    EXPECT_EQ(root.child(0), nullptr);
    EXPECT_TRUE(file.warnings.empty());
}

TEST(RootBoxTest, ReadsOnlyAsFarAsAsked) {
    ReadFile file(box("free", fill(4, 0)) + box("free") + box("mdat", fill(9, 1)));
    RootBox root(file.context());
    EXPECT_EQ(root.childCount(), 0U);
    ASSERT_NE(root.child(1), nullptr);
    EXPECT_EQ(root.childCount(), 2U);
    EXPECT_EQ(root.child(1)->position(), 12U);
    ASSERT_NE(root.child(2), nullptr);
    EXPECT_EQ(root.child(2)->type(), fourCc("mdat"));
    EXPECT_EQ(root.child(3), nullptr);
}

TEST(RootBoxTest, StaysAtTheEndOnceItWasReached) {
    ReadFile file(box("free") + fill(3, 0));
    RootBox root(file.context());
    EXPECT_EQ(root.child(1), nullptr);
    EXPECT_EQ(file.warnings, std::vector<std::uint32_t>{3073});
    EXPECT_EQ(root.child(7), nullptr);
    EXPECT_EQ(file.warnings.size(), 1U);
    EXPECT_EQ(root.childCount(), 1U);
}

TEST(RootBoxTest, EndsWith1028WhenTheHandlerRefusesStrayBytes) {
    ReadFile file(box("free") + fill(3, 0));
    file.goOn = false;
    RootBox root(file.context());
    EXPECT_EQ(codeThrownBy([&] { root.child(1); }), 1028U);
}

TEST(RootBoxTest, KeepsAnMdatThatClaimsMoreThanTheFileHas) {
    ReadFile file(box("free") + box("mdat", fill(9, 1)).claiming(1000));
    RootBox root(file.context());
    ASSERT_NE(root.child(1), nullptr);
    EXPECT_EQ(root.child(2), nullptr);
    EXPECT_EQ(file.warnings, std::vector<std::uint32_t>{3074});
}

TEST(RootBoxTest, RefusesAnotherBoxThatClaimsMoreThanTheFileHas) {
    ReadFile file(box("free", fill(9, 1)).claiming(1000));
    RootBox root(file.context());
    EXPECT_EQ(codeThrownBy([&] { root.child(0); }), 27U);
}

TEST(RootBoxTest, RunsALastBoxOfSizeZeroToTheEnd) {
    ReadFile file(plainMovie() + box("mdat", fill(100, 1)).claiming(0));
    RootBox root(file.context());
    ASSERT_NE(root.child(1), nullptr);
    EXPECT_EQ(root.child(1)->length(), 108U);
    EXPECT_EQ(root.child(2), nullptr);
}

TEST(RootBoxTest, RemembersTheMovieAndTheXmpBox) {
    ReadFile file(uuidBox(pattern(16, 1), fill(5, 0)) +
                  uuidBox(hex("BE7ACFCB97A942E89C71999491E3AFAC"), text("xmp")) + plainMovie());
    RootBox root(file.context());
    root.child(0);
    EXPECT_EQ(root.xmp(), nullptr);
    EXPECT_EQ(root.moov(), nullptr);
    EXPECT_EQ(root.child(3), nullptr);
    ASSERT_NE(root.xmp(), nullptr);
    EXPECT_EQ(root.xmp(), root.child(1));
    EXPECT_EQ(std::string(root.xmp()->body().begin(), root.xmp()->body().end()), "xmp");
    EXPECT_EQ(root.moov(), root.child(2));
}

TEST(RootBoxTest, FindsTheMovieBehindALeadingFragment) {
    const Bytes fragment = box("moof", fullBox("mfhd", 0, 0, u32(1)));
    ReadFile file(fragment + box("free") + plainMovie() + box("free"));
    RootBox root(file.context());
    ASSERT_NE(root.child(0), nullptr);
    EXPECT_EQ(root.child(0)->type(), fourCc("moof"));
    ASSERT_NE(root.moov(), nullptr);
    EXPECT_EQ(root.childCount(), 1U);

    MoovBox* early = root.moov();
    EXPECT_EQ(root.child(1)->position(), fragment.size());
    EXPECT_EQ(root.child(2), early);
    EXPECT_EQ(root.child(3)->type(), fourCc("free"));
    EXPECT_EQ(root.child(4), nullptr);
}

TEST(RootBoxTest, DestroysAMovieThatItNeverReached) {
    ReadFile file(box("moof", fullBox("mfhd", 0, 0, u32(1))) + plainMovie());
    RootBox root(file.context());
    root.child(0);
    EXPECT_NE(root.moov(), nullptr);  // the leak checker looks at the rest
}

TEST(RootBoxTest, ThrowsSixForAFragmentWithoutAMovie) {
    const Bytes fragment = box("moof", fullBox("mfhd", 0, 0, u32(1)));
    ReadFile file(fragment + box("free"));
    RootBox root(file.context());
    EXPECT_EQ(codeThrownBy([&] { root.child(0); }), 6U);

    ReadFile stray(fragment + fill(5, 0));
    RootBox strayRoot(stray.context());
    EXPECT_EQ(codeThrownBy([&] { strayRoot.child(0); }), 6U);
    EXPECT_EQ(stray.warnings, std::vector<std::uint32_t>{3073});

    ReadFile endless(boxOf("moof", fullBox("mfhd", 0, 0, u32(1))).claiming(0) + plainMovie());
    RootBox endlessRoot(endless.context());
    EXPECT_EQ(codeThrownBy([&] { endlessRoot.child(0); }), 6U);
}

TEST(RootBoxTest, RefusesASecondMovie) {
    ReadFile file(plainMovie() + plainMovie());
    RootBox root(file.context());
    EXPECT_NE(root.child(0), nullptr);
    EXPECT_EQ(codeThrownBy([&] { root.child(1); }), 36U);
}

TEST(RootBoxTest, RefusesAMovieWithoutItsRequiredChildren) {
    ReadFile file(box("moov", fullBox("mvhd", 0, 0, fill(96, 0))));
    RootBox root(file.context());
    EXPECT_EQ(codeThrownBy([&] { root.child(0); }), 14U);
}

TEST(RootBoxTest, NestsThirtyTwoLevelsDeepAndNoMore) {
    for (const int levels : {32, 33}) {
        Bytes nested = box("edts");
        for (int i = 1; i < levels; ++i) nested = box("edts", nested);
        ReadFile file(nested);
        RootBox root(file.context());
        EXPECT_EQ(codeThrownBy([&] { root.child(0); }), levels == 32 ? 0U : 27U) << levels;
    }
}

TEST(RootBoxTest, HandlesATemplateUuidAsThePlainCode) {
    const Bytes plain = plainMovie();
    ReadFile file(
        uuidBox(text("moov") + hex("00110010800000AA00389B71"), plain.slice(8, plain.size() - 8)));
    RootBox root(file.context());
    ASSERT_NE(root.child(0), nullptr);
    ASSERT_NE(root.moov(), nullptr);
    EXPECT_EQ(root.moov()->tracks().size(), 1U);
}

TEST(RootBoxTest, FindsTheChildrenOfAContainerWithA64BitSize) {
    const Bytes plain = plainMovie();
    ReadFile file(largeBox("moov", plain.slice(8, plain.size() - 8)));
    RootBox root(file.context());
    ASSERT_NE(root.child(0), nullptr);
    ASSERT_EQ(root.moov()->tracks().size(), 1U);
    EXPECT_EQ(root.moov()->mvhd()->movie().timescale, 600U);
}

TEST(RootBoxTest, ToleratesPaddingInsideAContainer) {
    const Bytes plain = plainMovie();
    ReadFile file(box("moov", plain.slice(8, plain.size() - 8), fill(7, 0)) + box("free"));
    RootBox root(file.context());
    EXPECT_EQ(root.child(1)->type(), fourCc("free"));
    EXPECT_EQ(root.moov()->childCount(), 2U);
    EXPECT_TRUE(file.warnings.empty());
}

TEST(RootBoxTest, EndsWithACodeWhereverAMovieIsCut) {
    const Bytes whole = plainMovie();
    for (std::size_t cut = 8; cut < whole.size(); ++cut) {
        ReadFile file(whole.cutTo(cut));
        RootBox root(file.context());
        EXPECT_EQ(codeThrownBy([&] { root.child(0); }), 27U) << cut;
    }
}

TEST(RootBoxTest, EndsWithACodeWhicheverWordOfAMovieIsWrong) {
    const Bytes whole = movie(track("vide", {}) + track("soun", {}) + track("hint", {}));
    for (const std::uint32_t word : {0U, 0xFFFFFFFFU, 0x7FFFFFFFU}) {
        for (std::size_t at = 0; at + 4 <= whole.size(); ++at) {
            ReadFile file(whole.patched(at, u32(word)));
            RootBox root(file.context());
            const std::uint32_t code = codeThrownBy([&] {
                while (root.child(root.childCount()) != nullptr) {
                }
            });
            EXPECT_LT(code, 1031U) << at;
        }
    }
}

TEST(RootBoxTest, KnowsWhereTheFragmentsOfATrackEnd) {
    RootBox root({});
    EXPECT_EQ(root.trackEnd(3), 0U);
    root.setTrackEnd(3, 900);
    EXPECT_EQ(root.trackEnd(3), 900U);
    EXPECT_EQ(root.trackEnd(2), 0U);
}

}  // namespace
}  // namespace qlix::kzm::impl
