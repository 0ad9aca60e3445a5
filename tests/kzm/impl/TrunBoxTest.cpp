#include <gtest/gtest.h>

#include "kzm/impl/BoxSupport.h"
#include "kzm/impl/TrunBox.h"

namespace qlix::kzm::impl {
namespace {

using namespace kz::test;

FragmentSample sampleAt(std::uint64_t time, std::uint64_t offset, std::uint32_t size) {
    FragmentSample sample;
    sample.decodeTime = time;
    sample.offset = offset;
    sample.size = size;
    return sample;
}

/// Reads a `trun` with defaults of duration 10, size 20 and flags 30 on a base of 1000.
class ReadRun {
public:
    explicit ReadRun(const Bytes& bytes) : file_(bytes), box_(file_.make()) {
        run().setDefaults({1000, 5000, 10, 20, 30});
        run().parse(nullptr, true);
    }
    TrunBox& run() { return dynamic_cast<TrunBox&>(*box_); }

private:
    ReadFile file_;
    BoxPtr box_;
};

TEST(TrunBoxTest, WritesDurationSizeFlagsAndCompositionOffsetOfEachSample) {
    WriteFile file;
    TrunBox box(file.context(), 16, 5);
    FragmentSample first = sampleAt(0, 21, 100);
    first.kind = 1;
    FragmentSample second = sampleAt(40, 121, 7);
    second.compositionOffset = 0xFFFFFFD8;
    EXPECT_TRUE(box.append(first));
    EXPECT_TRUE(box.append(second));
    box.setLastDuration(33);
    EXPECT_EQ(written(file, box), hexTable(R"(
        0   00000034  size 20 + 2 x 16
        4   7472756e  'trun'
        8   00000f01  version 0, flags
        12  00000002  sample count
        16  00000005  data offset
        20  00000028  duration: 40 - 0
        24  00000064  size
        28  02000000  a sync sample
        32  00000000  composition offset
        36  00000021  duration as set
        40  00000007  size
        44  01010000  any other sample
        48  ffffffd8  composition offset
    )"));
}

TEST(TrunBoxTest, GrowsBySixteenBytesASample) {
    WriteFile file;
    TrunBox box(file.context(), 0, 0);
    EXPECT_EQ(box.size(), 20U);
    for (std::uint64_t i = 0; i < 10; ++i) box.append(sampleAt(i, i, 1));
    EXPECT_EQ(box.size(), 180U);
    EXPECT_EQ(written(file, box).size(), 180U);
}

TEST(TrunBoxTest, RefusesASampleThatIsNotAdjacent) {
    WriteFile file;
    TrunBox box(file.context(), 16, 5);
    EXPECT_FALSE(box.append(sampleAt(0, 20, 1)));
    EXPECT_FALSE(box.append(sampleAt(0, 22, 1)));
    EXPECT_TRUE(box.append(sampleAt(0, 21, 10)));
    EXPECT_FALSE(box.append(sampleAt(1, 30, 1)));
    EXPECT_FALSE(box.append(sampleAt(1, 32, 1)));
    EXPECT_TRUE(box.append(sampleAt(1, 31, 0)));
    EXPECT_TRUE(box.append(sampleAt(2, 31, 1)));
    EXPECT_EQ(box.sampleCount(), 3U);
}

TEST(TrunBoxTest, TheNewRowHasDurationOneWhenTheLastTimeIsZero) {
    TrunBox box({}, 0, 0);
    box.append(sampleAt(0, 0, 1));
    EXPECT_EQ(box.lastSample().duration, 1U);
    box.append(sampleAt(40, 1, 1));
    EXPECT_EQ(box.lastSample().duration, 1U) << "behind a row at time 0";
    EXPECT_EQ(box.sample(0).duration, 40U);
    box.append(sampleAt(65, 2, 1));
    EXPECT_EQ(box.lastSample().duration, 25U);
    EXPECT_EQ(box.sample(1).duration, 25U);

    TrunBox later({}, 0, 0);
    later.append(sampleAt(5000, 0, 1));
    EXPECT_EQ(later.lastSample().duration, 1U) << "the first row of a run";
}

TEST(TrunBoxTest, OnlyTheLowByteOfTheKindMakesASyncSample) {
    TrunBox box({}, 0, 0);
    FragmentSample sample = sampleAt(0, 0, 1);
    sample.kind = 0x2401;
    box.append(sample);
    EXPECT_EQ(box.lastSample().flags, 0x02000000U);
    sample = sampleAt(0, 1, 1);
    sample.kind = 0x0100;
    box.append(sample);
    EXPECT_EQ(box.lastSample().flags, 0x01010000U);
}

TEST(TrunBoxTest, CutsDifferencesToThirtyTwoBits) {
    TrunBox box({}, 0, 0);
    box.append(sampleAt(7, 0, 1));
    box.append(sampleAt(0x10000000A, 1, 1));
    EXPECT_EQ(box.sample(0).duration, 3U);
}

TEST(TrunBoxTest, TellsWhereTheLastDurationStands) {
    struct Case {
        std::uint32_t flags;
        std::uint64_t expected;  // behind the start of the box, with three samples
    };
    for (const Case& each : {Case{0xF01, 20 + 32}, Case{0xF00, 16 + 32}, Case{0xF05, 24 + 32},
                             Case{0xF04, 20 + 32}, Case{0x301, 20 + 16}}) {
        TrunBox box({}, 0, 0, each.flags);
        for (std::uint64_t i = 0; i < 3; ++i) box.append(sampleAt(i, i, 1));
        box.setPosition(1000);
        EXPECT_EQ(box.lastDurationPosition(), 1000 + each.expected) << each.flags;
    }
}

TEST(TrunBoxTest, WritesTheFlagsOfTheFirstSampleAsZero) {
    WriteFile file;
    TrunBox box(file.context(), 0, 0, 0x204);
    FragmentSample sync = sampleAt(0, 0, 9);
    sync.kind = 1;
    box.append(sync);
    EXPECT_EQ(written(file, box), hexTable(R"(
        0   00000018  size
        4   7472756e  'trun'
        8   00000204  flags: flags of the first sample, sizes
        12  00000001  sample count
        16  00000000  flags of the first sample
        20  00000009  size
    )"));
}

TEST(TrunBoxTest, IsWrittenByOneWrite) {
    WriteFile file;
    TrunBox box(file.context(), 0, 0);
    for (std::uint64_t i = 0; i < 100; ++i) box.append(sampleAt(i, i, 1));
    box.write();
    file.stream.flush();
    EXPECT_EQ(file.memory.writes, 1U);
}

TEST(TrunBoxTest, ReadsAllFields) {
    ReadRun read(fullBox("trun", 0, 0xF01, u32(2), u32(24), u32(1), u32(2), u32(3), u32(4), u32(5),
                         u32(6), u32(7), u32(8)));
    ASSERT_EQ(read.run().sampleCount(), 2U);
    EXPECT_EQ(read.run().setStartTime(700), 706U);
    const TrunSample first = read.run().sample(0);
    EXPECT_EQ(first.decodeTime, 700U);
    EXPECT_EQ(first.duration, 1U);
    EXPECT_EQ(first.size, 2U);
    EXPECT_EQ(first.flags, 3U);
    EXPECT_EQ(first.compositionOffset, 4U);
    EXPECT_EQ(first.offset, 1024U);
    const TrunSample second = read.run().sample(1);
    EXPECT_EQ(second.decodeTime, 701U);
    EXPECT_EQ(second.compositionOffset, 8U);
    EXPECT_EQ(second.offset, 1026U);
    EXPECT_EQ(read.run().dataEnd(), 1032U);
}

TEST(TrunBoxTest, HasNoSamplesWhenTheCountIsZero) {
    for (const std::uint32_t flags : {0U, 0xF01U}) {
        ReadRun read(fullBox("trun", 0, flags, u32(0), u32(24)));
        EXPECT_EQ(read.run().sampleCount(), 0U);
        EXPECT_EQ(read.run().setStartTime(700), 700U);
        EXPECT_EQ(read.run().endTime(), 700U);
        EXPECT_EQ(read.run().firstAtOrAfter(0), 0U);
    }
}

TEST(TrunBoxTest, HasNoCompositionOffsetWithoutItsFlag) {
    ReadRun read(fullBox("trun", 0, 0x200, u32(1), u32(9)));
    EXPECT_EQ(read.run().sample(0).compositionOffset, 0U);
}

TEST(TrunBoxTest, TakesWhatIsAbsentFromTheDefaults) {
    ReadRun read(fullBox("trun", 0, 0x800, u32(2), u32(3), u32(4)));
    EXPECT_EQ(read.run().sample(1).duration, 10U);
    EXPECT_EQ(read.run().sample(1).size, 20U);
    EXPECT_EQ(read.run().sample(0).flags, 30U);
    EXPECT_EQ(read.run().sample(1).flags, 30U);
}

TEST(TrunBoxTest, TheFlagsOfTheFirstSampleCountForItAlone) {
    ReadRun read(fullBox("trun", 0, 0x104, u32(2), u32(77), u32(1), u32(1)));
    EXPECT_EQ(read.run().sample(0).flags, 77U);
    EXPECT_EQ(read.run().sample(1).flags, 30U);
    ReadRun own(fullBox("trun", 0, 0x404, u32(2), u32(77), u32(5), u32(6)));
    EXPECT_EQ(own.run().sample(0).flags, 5U);
}

TEST(TrunBoxTest, GoesOnWhereTheRunBeforeEndedWithoutADataOffset) {
    ReadRun read(fullBox("trun", 0, 0x200, u32(2), u32(3), u32(4)));
    EXPECT_EQ(read.run().sample(0).offset, 5000U);
    EXPECT_EQ(read.run().sample(1).offset, 5003U);
    EXPECT_EQ(read.run().dataEnd(), 5007U);
}

TEST(TrunBoxTest, ReadsTheDataOffsetAsASignedNumber) {
    ReadRun read(fullBox("trun", 0, 0x201, u32(1), u32(0xFFFFFFFC), u32(3)));
    EXPECT_EQ(read.run().sample(0).offset, 996U);
}

TEST(TrunBoxTest, SamplesWithoutFieldsAreAllAlike) {
    ReadRun read(fullBox("trun", 0, 0x005, u32(3), u32(100), u32(77)));
    EXPECT_EQ(read.run().setStartTime(50), 80U);
    EXPECT_EQ(read.run().dataEnd(), 1160U);
    EXPECT_EQ(read.run().sample(0).flags, 77U);
    EXPECT_EQ(read.run().sample(1).flags, 30U);
    EXPECT_EQ(read.run().sample(2).offset, 1140U);
    EXPECT_EQ(read.run().sample(2).decodeTime, 70U);
    EXPECT_EQ(read.run().lastSample().size, 20U);
    EXPECT_EQ(read.run().firstAtOrAfter(61), 2U);
}

TEST(TrunBoxTest, RefusesCountsThatNoBoxCanHold) {
    const auto codeOfCount = [](std::uint32_t flags, std::uint32_t count, std::uint32_t size) {
        ReadFile file(fullBox("trun", 0, flags, u32(count), fill(32, 0)));
        const BoxPtr box = file.make();
        dynamic_cast<TrunBox&>(*box).setDefaults({0, 0, 1, size, 0});
        return codeThrownBy([&] { box->parse(nullptr, true); });
    };
    EXPECT_EQ(codeOfCount(0xF00, 0xFFFFFFFF, 1), 29U);
    EXPECT_EQ(codeOfCount(0xF00, 0x10000000, 1), 29U) << "16 x 2^28 is 2^32";
    EXPECT_EQ(codeOfCount(0xF00, 0x0FFFFFFF, 1), 27U);
    EXPECT_EQ(codeOfCount(0xF00, 3, 1), 27U);
    EXPECT_EQ(codeOfCount(0xF00, 2, 1), 0U);
    EXPECT_EQ(codeOfCount(0, 0xFFFFFFFF, 1), 29U);
    EXPECT_EQ(codeOfCount(0, 100000001, 1), 29U);
    EXPECT_EQ(codeOfCount(0, 100000000, 1), 0U);
    EXPECT_EQ(codeOfCount(0, 1025, 0), 29U) << "nothing stands behind so many empty samples";
    EXPECT_EQ(codeOfCount(0, 1024, 0), 0U);
}

TEST(TrunBoxTest, ThrowsTwentySevenWhenAFieldIsCut) {
    const Bytes whole = fullBox("trun", 0, 0xF05, u32(1), u32(0), u32(0), fill(16, 1));
    for (std::size_t size = 12; size < whole.size(); ++size) {
        ReadFile file(whole.cutTo(size).patched(0, u32(size)));
        const BoxPtr box = file.make();
        EXPECT_EQ(codeThrownBy([&] { box->parse(nullptr, true); }), 27U) << size;
    }
}

TEST(TrunBoxTest, FindsTheFirstSampleAtOrAfterATime) {
    ReadRun read(fullBox("trun", 0, 0x300, u32(4), u32(10), u32(1), u32(0), u32(1), u32(10), u32(1),
                         u32(10), u32(1)));
    read.run().setStartTime(100);  // 100, 110, 110, 120
    const std::vector<std::pair<std::uint64_t, std::uint32_t>> cases = {
        {0, 0}, {100, 0}, {101, 1}, {110, 1}, {111, 3}, {120, 3}, {121, 4}};
    for (const auto& [time, index] : cases) {
        EXPECT_EQ(read.run().firstAtOrAfter(time), index) << time;
    }
}

}  // namespace
}  // namespace qlix::kzm::impl
