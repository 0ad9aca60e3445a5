#include <gtest/gtest.h>

#include "kzm/impl/BoxSupport.h"
#include "kzm/impl/HeaderFixtures.h"
#include "kzm/impl/MoofBox.h"
#include "kzm/impl/RootBox.h"
#include "kzm/impl/TrafBox.h"

namespace qlix::kzm::impl {
namespace {

using namespace kz::test;

/// A `traf` of track 1 with one run of samples of the track's defaults: 10 ticks, 5 bytes.
Bytes traf(std::uint32_t count) {
    return box("traf", fullBox("tfhd", 0, 0, u32(1)), fullBox("trun", 0, 0, u32(count)));
}

Bytes moof(const Bytes& trafs) { return box("moof", fullBox("mfhd", 0, 0, u32(7)), trafs); }

Bytes fragmentedMovie() {
    return movie(track("vide", {}) +
                 box("mvex", fullBox("trex", 0, 0, u32(1), u32(1), u32(10), u32(5), u32(0))));
}

/// A movie and the fragments behind it, all read.
class ReadDocument {
public:
    explicit ReadDocument(const Bytes& fragments)
        : file(fragmentedMovie() + fragments), root(file.context()) {
        while (root.child(root.childCount()) != nullptr) {
        }
    }
    /// The fragment with this number, from 0.
    MoofBox& fragment(std::size_t index) {
        return dynamic_cast<MoofBox&>(*root.heldChild(index + 1));
    }
    TrunSample firstSample(std::size_t index, std::size_t child = 1) {
        auto& found = dynamic_cast<TrafBox&>(*fragment(index).heldChild(child));
        return found.lastRun()->sample(0);
    }
    /// Reads a fragment again, whose bytes at `offset` are other ones by now.
    std::uint32_t codeWith(std::uint64_t offset, const Bytes& bytes) {
        MoofBox& box = fragment(0);
        if (box.isWhole()) box.hold(root).reset();
        // Another file under the same document, so that no window holds the old bytes.
        file.memory.content = file.memory.content.patched(box.position() + offset, bytes);
        file.stream.open();
        return codeThrownBy([&] { box.hold(root); });
    }

    ReadFile file;
    RootBox root;
};

TEST(MoofHoldTest, ABoxThatNobodyHasHeldIsWhole) {
    ReadDocument test(moof(traf(2)));
    EXPECT_TRUE(test.fragment(0).isWhole());
    EXPECT_EQ(test.fragment(0).childCount(), 2U);
}

TEST(MoofHoldTest, ABoxIsWholeAsLongAsOneHoldsIt) {
    ReadDocument test(moof(traf(2)));
    MoofBox& box = test.fragment(0);
    MoofHold first = box.hold(test.root);
    MoofHold second = box.hold(test.root);
    const Box* const inside = box.heldChild(1);
    first.reset();
    EXPECT_TRUE(box.isWhole());
    EXPECT_EQ(box.heldChild(1), inside) << "nothing was read again";
    second.reset();
    EXPECT_FALSE(box.isWhole());
    EXPECT_EQ(box.childCount(), 0U);
    EXPECT_EQ(box.mfhd(), nullptr);
}

TEST(MoofHoldTest, ReadsTheSameAgain) {
    // The second traf has no base of its own: its data is behind that of the first.
    ReadDocument test(moof(traf(1)) + moof(traf(3) + traf(4)) + moof(traf(5)));
    MoofBox& box = test.fragment(1);
    box.hold(test.root).reset();
    const MoofHold held = box.hold(test.root);
    ASSERT_EQ(box.childCount(), 3U);
    ASSERT_NE(box.mfhd(), nullptr);
    EXPECT_EQ(box.mfhd()->sequenceNumber(), 7U);
    EXPECT_EQ(test.firstSample(1).decodeTime, 10U);
    EXPECT_EQ(test.firstSample(1).offset, box.position());
    EXPECT_EQ(test.firstSample(1, 2).decodeTime, 40U);
    EXPECT_EQ(test.firstSample(1, 2).offset, box.position() + 15);
}

TEST(MoofHoldTest, ReadingAgainDoesNotCountForFragmentsBehind) {
    // Also where one fragment is inside another.
    ReadDocument test(moof(traf(1)) + moof(traf(2) + moof(traf(6))) + moof(traf(5)));
    const std::uint64_t end = test.root.trackEnd(1);
    for (std::size_t i = 0; i < 2; ++i) {
        test.fragment(i).hold(test.root).reset();
        const MoofHold held = test.fragment(i).hold(test.root);
        EXPECT_EQ(test.root.trackEnd(1), end) << i;
    }
}

TEST(MoofHoldTest, ReadingAgainWarnsOfNothing) {
    // The run claims a byte more than its traf has.
    const Bytes tfhd = fullBox("tfhd", 0, 0, u32(1));
    const Bytes run = fullBox("trun", 0, 0, u32(1));
    ReadDocument test(moof(box("traf", tfhd, run.patched(0, u32(run.size() + 1)))));
    EXPECT_EQ(test.file.warnings, std::vector<std::uint32_t>{3075});
    test.fragment(0).hold(test.root).reset();
    test.file.goOn = false;
    const MoofHold held = test.fragment(0).hold(test.root);
    EXPECT_EQ(test.firstSample(0).size, 5U);
    EXPECT_EQ(test.file.warnings.size(), 1U);
    // Whatever comes later is told of again.
    EXPECT_EQ(codeThrownBy([&] { test.file.stream.warn(ErrorCode::warnTruncated); }), 1028U);
}

TEST(MoofHoldTest, GivesTheErrorsOfReadingWhenItReadsAgain) {
    // 0 moof, 8 mfhd, 24 traf, 32 tfhd, 48 trun: flags at 56, count at 60.
    const Bytes whole = moof(traf(1));
    ASSERT_EQ(whole.slice(52, 4), text("trun"));
    EXPECT_EQ(ReadDocument(whole).codeWith(56, u32(0x100)), 27U) << "a duration beyond the box";
    EXPECT_EQ(ReadDocument(whole).codeWith(60, u32(0xFFFFFFFF)), 29U);
    EXPECT_EQ(ReadDocument(whole).codeWith(44, u32(2)), 25U) << "no defaults for that track";
    EXPECT_EQ(ReadDocument(whole).codeWith(36, text("free")), 14U) << "no header";
    EXPECT_EQ(ReadDocument(whole).codeWith(8, u32(4)), 27U) << "smaller than its header";
    EXPECT_EQ(ReadDocument(whole).codeWith(60, u32(3)), 0U);
}

TEST(MoofHoldTest, ThrowsFourteenWhenThereAreMoreOrFewerTrafsThanAtFirst) {
    EXPECT_EQ(ReadDocument(moof(traf(1))).codeWith(28, text("free")), 14U);
    ReadDocument more(moof(traf(1) + traf(1).patched(4, text("free"))));
    EXPECT_EQ(more.codeWith(24 + traf(1).size() + 4, text("traf")), 14U);
}

TEST(MoofHoldTest, AFailureLeavesNothingInsideAndTheNextHolderReadsOnceMore) {
    ReadDocument test(moof(traf(3)));
    EXPECT_EQ(test.codeWith(60, u32(0xFFFFFFFF)), 29U);
    EXPECT_FALSE(test.fragment(0).isWhole());
    EXPECT_EQ(test.fragment(0).childCount(), 0U);
    EXPECT_EQ(test.codeWith(60, u32(3)), 0U);
    const MoofHold held = test.fragment(0).hold(test.root);
    EXPECT_EQ(test.firstSample(0).size, 5U);
}

TEST(MoofHoldTest, StaysWholeOnceItWasReadEightTimes) {
    ReadDocument test(moof(traf(1)));
    MoofBox& box = test.fragment(0);
    for (int reading = 1; reading < 8; ++reading) {
        box.hold(test.root).reset();
        EXPECT_FALSE(box.isWhole()) << reading;
    }
    box.hold(test.root).reset();
    EXPECT_TRUE(box.isWhole());
}

}  // namespace
}  // namespace qlix::kzm::impl
