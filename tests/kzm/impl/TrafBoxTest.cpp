#include <gtest/gtest.h>

#include "kzm/impl/BoxSupport.h"
#include "kzm/impl/HeaderFixtures.h"
#include "kzm/impl/MoofBox.h"
#include "kzm/impl/RootBox.h"
#include "kzm/impl/TrafBox.h"

namespace qlix::kzm::impl {
namespace {

using namespace kz::test;

FragmentSample sampleAt(std::uint64_t time, std::uint64_t offset, std::uint32_t size) {
    FragmentSample sample;
    sample.decodeTime = time;
    sample.offset = offset;
    sample.size = size;
    sample.descriptionIndex = 1;
    return sample;
}

TrafBox& trafAt(Box& moof, std::size_t index) {
    return dynamic_cast<TrafBox&>(*moof.heldChild(index));
}

TrunBox& runAt(TrafBox& traf, std::size_t index) {
    return dynamic_cast<TrunBox&>(*traf.heldChild(index));
}

TEST(TrafBoxTest, PutsAdjacentSamplesIntoOneRun) {
    WriteFile file;
    TrafBox box(file.context(), 1, 16, 1);
    EXPECT_EQ(box.addSample(sampleAt(0, 16, 10)), TrafBox::Added::newRun);
    EXPECT_EQ(box.addSample(sampleAt(40, 26, 10)), TrafBox::Added::appended);
    EXPECT_EQ(box.childCount(), 2U);
    EXPECT_EQ(box.size(), 8U + 28 + 20 + 2 * 16);
}

TEST(TrafBoxTest, BeginsARunForASampleThatIsNotAdjacent) {
    WriteFile file;
    TrafBox box(file.context(), 2, 16, 1);
    EXPECT_EQ(box.addSample(sampleAt(5, 20, 3)), TrafBox::Added::newRun);
    EXPECT_EQ(box.addSample(sampleAt(45, 40, 6)), TrafBox::Added::newRun);
    EXPECT_EQ(written(file, box), hexTable(R"(
        0   0000006c          size 8 + 28 + 2 x 36
        4   74726166          'traf'
        8   0000001c          size
        12  74666864          'tfhd'
        16  00000003          version 0, flags 3
        20  00000002          track id
        24  0000000000000010  base data offset
        32  00000001          description index
        36  00000024          size
        40  7472756e          'trun'
        44  00000f01          flags
        48  00000001          sample count
        52  00000004          data offset 20 - 16
        56  00000028          duration, settled by the next run
        60  00000003          size
        64  01010000          flags
        68  00000000          composition offset
        72  00000024          size
        76  7472756e          'trun'
        80  00000f01          flags
        84  00000001          sample count
        88  00000018          data offset 40 - 16
        92  00000001          duration, first row of a run
        96  00000006          size
        100 01010000          flags
        104 00000000          composition offset
    )"));
}

TEST(TrafBoxTest, RefusesASampleOfAnotherDescription) {
    TrafBox box({}, 1, 16, 1);
    FragmentSample other = sampleAt(0, 16, 10);
    other.descriptionIndex = 2;
    EXPECT_EQ(box.addSample(other), TrafBox::Added::refused);
    EXPECT_EQ(box.childCount(), 1U);
    box.tfhd()->setDescriptionIndex(2);
    EXPECT_EQ(box.addSample(other), TrafBox::Added::newRun);
}

TEST(TrafBoxTest, ThrowsWhenTheDataOffsetNeedsMoreThanThirtyTwoBits) {
    TrafBox box({}, 1, 16, 1);
    EXPECT_EQ(box.addSample(sampleAt(0, 0x10000000F, 1)), TrafBox::Added::newRun);
    EXPECT_EQ(box.addSample(sampleAt(1, 0x100000010, 1)), TrafBox::Added::appended)
        << "a run may go on past the limit";
    EXPECT_EQ(codeThrownBy([&] { box.addSample(sampleAt(2, 0x100000012, 1)); }), 1024U);
    EXPECT_EQ(codeThrownBy([&] { box.addSample(sampleAt(2, 15, 1)); }), 1024U)
        << "in front of the base";
}

TEST(TrafBoxTest, GivesDecodeTimesRunByRun) {
    ReadFile file(box("traf", fullBox("tfhd", 0, 0x1, u32(1), u64(500)),
                      fullBox("trun", 0, 0x301, u32(2), u32(0), u32(10), u32(3), u32(20), u32(4)),
                      fullBox("trun", 0, 0x300, u32(1), u32(5), u32(6))));
    const BoxPtr made = file.read();
    auto& traf = dynamic_cast<TrafBox&>(*made);
    const TrunBox& run = runAt(traf, 1);
    ASSERT_EQ(run.sampleCount(), 3U);
    EXPECT_EQ(run.sample(0).decodeTime, 0U);
    EXPECT_EQ(run.sample(1).decodeTime, 10U);
    EXPECT_EQ(run.sample(2).decodeTime, 30U);
    EXPECT_EQ(run.endTime(), 35U);
    EXPECT_EQ(run.sample(1).offset, 503U);
    EXPECT_EQ(run.sample(2).offset, 507U) << "behind the data of the run before";
}

TEST(TrafBoxTest, HoldsRunsThatFollowEachOtherAsOne) {
    // Two samples with sizes, then one, two and a hundred thousand of the defaults, then one.
    const auto sized = [](std::uint32_t size) {
        return fullBox("trun", 0, 0x200, u32(1), u32(size));
    };
    const auto alike = [](std::uint32_t count) { return fullBox("trun", 0, 0, u32(count)); };
    ReadFile file(box(
        "traf", fullBox("tfhd", 0, 0x39, u32(1), u64(500), u32(10), u32(2), u32(0x10000)), sized(7),
        box("free", fill(4, 0)), sized(8), alike(1), alike(2), alike(100000), sized(9)));
    const BoxPtr made = file.read();
    auto& traf = dynamic_cast<TrafBox&>(*made);
    ASSERT_EQ(traf.childCount(), 5U);  // the header, the free box and three runs
    const TrunBox& first = runAt(traf, 1);
    ASSERT_EQ(first.sampleCount(), 5U);
    const std::uint64_t offsets[] = {500, 507, 515, 517, 519};
    for (std::uint32_t i = 0; i < 5; ++i) {
        EXPECT_EQ(first.sample(i).offset, offsets[i]);
        EXPECT_EQ(first.sample(i).decodeTime, i * 10U);
        EXPECT_EQ(first.sample(i).flags, 0x10000U);
    }
    EXPECT_EQ(first.endTime(), 50U);
    EXPECT_EQ(first.dataEnd(), 521U);
    EXPECT_EQ(first.firstAtOrAfter(31), 4U);
    EXPECT_EQ(traf.heldChild(2)->type(), fourCc("free"));
    EXPECT_EQ(runAt(traf, 3).sampleCount(), 100000U);
    EXPECT_EQ(runAt(traf, 4).sample(0).size, 9U);
    EXPECT_EQ(runAt(traf, 4).sample(0).decodeTime, 1000050U);
    EXPECT_EQ(traf.lastRun(), traf.heldChild(4));
}

TEST(TrafBoxTest, ThrowsTwentyFourWithoutAHeader) {
    ReadFile file(box("traf", fullBox("trun", 0, 0, u32(0))));
    EXPECT_EQ(codeThrownBy([&] { file.read(); }), 24U);
}

TEST(TrafBoxTest, NeedsExactlyOneHeader) {
    ReadFile file(box("traf"));
    const BoxPtr made = file.make();
    EXPECT_EQ(codeThrownBy([&] { made->parse(nullptr, true); }), 14U);
}

TEST(TrafBoxTest, ParsesChildrenThatAreNoRuns) {
    ReadFile file(box("traf", fullBox("tfhd", 0, 0, u32(1)), box("free", fill(5, 0)),
                      fullBox("mfhd", 0, 0, u32(4))));
    const BoxPtr made = file.read();
    EXPECT_EQ(dynamic_cast<MfhdBox&>(*made->heldChild(2)).sequenceNumber(), 4U);
}

/// A `moof` 100 bytes into the file whose first `traf` has 7 bytes of data from its base.
Bytes fragmentAt100(std::uint32_t firstFlags, std::uint32_t secondFlags) {
    const IsoBox run = fullBox("trun", 0, 0x300, u32(1), u32(10), u32(7));
    return fill(100, 0) + box("moof", fullBox("mfhd", 0, 0, u32(1)),
                              box("traf", fullBox("tfhd", 0, firstFlags, u32(1)), run),
                              box("traf", fullBox("tfhd", 0, secondFlags, u32(2)), run));
}

TEST(TrafBoxTest, TheFirstWithoutABaseCountsFromTheMoof) {
    ReadFile file(fragmentAt100(0, 0));
    const BoxPtr moof = file.read(100);
    EXPECT_EQ(runAt(trafAt(*moof, 1), 1).sample(0).offset, 100U);
}

TEST(TrafBoxTest, ALaterOneWithoutABaseCountsFromTheEndOfTheDataBefore) {
    ReadFile file(fragmentAt100(0, 0));
    const BoxPtr moof = file.read(100);
    EXPECT_EQ(runAt(trafAt(*moof, 2), 1).sample(0).offset, 107U);
}

TEST(TrafBoxTest, CountsFromTheMoofWhenItSaysSo) {
    ReadFile file(fragmentAt100(0x020000, 0x020000));
    const BoxPtr moof = file.read(100);
    EXPECT_EQ(runAt(trafAt(*moof, 1), 1).sample(0).offset, 100U);
    EXPECT_EQ(runAt(trafAt(*moof, 2), 1).sample(0).offset, 100U);
}

TEST(TrafBoxTest, ASecondOneOfATrackInAMoofGoesOnInTime) {
    const IsoBox traf = box("traf", fullBox("tfhd", 0, 0, u32(1)),
                            fullBox("trun", 0, 0x300, u32(1), u32(10), u32(7)));
    ReadFile file(box("moof", fullBox("mfhd", 0, 0, u32(1)), traf, traf));
    const BoxPtr moof = file.read();
    EXPECT_EQ(runAt(trafAt(*moof, 1), 1).sample(0).decodeTime, 0U);
    EXPECT_EQ(runAt(trafAt(*moof, 2), 1).sample(0).decodeTime, 10U);
}

/// A movie of track 1 whose `trex` gives description 3, duration 10, size 5 and flags 7.
Bytes fragmentedMovie() {
    const Bytes mvex = box("mvex", fullBox("trex", 0, 0, u32(1), u32(3), u32(10), u32(5), u32(7)));
    return movie(track("vide", {}) + mvex);
}

/// A fragment with one `traf` of a track and what stands behind its `tfhd`.
Bytes fragment(std::uint32_t trackId, const Bytes& runs, std::uint32_t flags = 0,
               const Bytes& fields = {}) {
    return box("moof", fullBox("mfhd", 0, 0, u32(1)),
               box("traf", fullBox("tfhd", 0, flags, u32(trackId), fields), runs));
}

/// A run of samples of the defaults alone.
Bytes plainRun(std::uint32_t count) { return fullBox("trun", 0, 0, u32(count)); }

/// A document whose boxes were all read.
class ReadDocument {
public:
    explicit ReadDocument(const Bytes& bytes) : file_(bytes), root(file_.context()) {
        while (root.child(root.childCount()) != nullptr) {
        }
    }
    TrafBox& traf(std::size_t child) { return trafAt(*root.heldChild(child), 1); }
    std::uint64_t startOf(std::size_t child) { return runAt(traf(child), 1).sample(0).decodeTime; }

private:
    ReadFile file_;

public:
    RootBox root;
};

TEST(TrafBoxTest, TakesEachValueThatItsHeaderLeavesOutFromTheDefaultsOfTheTrack) {
    ReadDocument all(fragmentedMovie() + fragment(1, plainRun(1)));
    const TrunSample sample = runAt(all.traf(1), 1).sample(0);
    EXPECT_EQ(all.traf(1).tfhd()->descriptionIndex(), 3U);
    EXPECT_EQ(sample.duration, 10U);
    EXPECT_EQ(sample.size, 5U);
    EXPECT_EQ(sample.flags, 7U);

    ReadDocument some(fragmentedMovie() + fragment(1, plainRun(1), 0x12, u32(9) + u32(50)));
    EXPECT_EQ(some.traf(1).tfhd()->descriptionIndex(), 9U);
    EXPECT_EQ(runAt(some.traf(1), 1).sample(0).duration, 10U);
    EXPECT_EQ(runAt(some.traf(1), 1).sample(0).size, 50U);
    EXPECT_EQ(runAt(some.traf(1), 1).sample(0).flags, 7U);
}

TEST(TrafBoxTest, ThrowsFourteenWithoutAnMvexAndTwentyFiveWithoutATrex) {
    EXPECT_EQ(
        codeThrownBy([&] { ReadDocument(movie(track("vide", {})) + fragment(1, plainRun(1))); }),
        14U);
    EXPECT_EQ(codeThrownBy([&] { ReadDocument(fragmentedMovie() + fragment(2, plainRun(1))); }),
              25U);
}

TEST(TrafBoxTest, StartsWhereTheLastFragmentOfItsTrackEnded) {
    const Bytes mvex = box("mvex", fullBox("trex", 0, 0, u32(1), u32(3), u32(10), u32(5), u32(7)),
                           fullBox("trex", 0, 0, u32(2), u32(3), u32(100), u32(5), u32(7)));
    ReadDocument test(movie(track("vide", {}) + mvex) + fragment(1, plainRun(3)) +
                      fragment(2, plainRun(2)) + fragment(2, plainRun(1)) +
                      fragment(1, plainRun(1)));
    EXPECT_EQ(test.startOf(1), 0U);
    EXPECT_EQ(test.startOf(2), 0U);
    EXPECT_EQ(test.startOf(3), 200U);
    EXPECT_EQ(test.startOf(4), 30U);
}

TEST(TrafBoxTest, ARunWithoutSamplesKeepsTheTime) {
    ReadDocument test(fragmentedMovie() + fragment(1, plainRun(3)) + fragment(1, plainRun(0)) +
                      fragment(1, plainRun(1)));
    EXPECT_EQ(test.startOf(3), 30U);
}

TEST(TrafBoxTest, ATrafWithoutRunsMakesTheNextOneStartAtZero) {
    ReadDocument test(fragmentedMovie() + fragment(1, plainRun(3)) + fragment(1, {}) +
                      fragment(1, plainRun(1)));
    EXPECT_EQ(test.startOf(3), 0U);
}

TEST(TrafBoxTest, AFragmentThatBeginsTheFileDoesNotCountForLaterOnes) {
    ReadDocument first(fragment(1, plainRun(3)) + fragmentedMovie() + fragment(1, plainRun(1)));
    EXPECT_EQ(first.startOf(2), 0U);
    ReadDocument second(box("free") + fragment(1, plainRun(3)) + fragmentedMovie() +
                        fragment(1, plainRun(1)));
    EXPECT_EQ(second.startOf(3), 30U);
}

}  // namespace
}  // namespace qlix::kzm::impl
