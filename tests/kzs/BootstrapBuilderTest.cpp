#include <string>

#include <gtest/gtest.h>

#include "kzs/BootstrapBuilder.h"

namespace torvo::kzs {
namespace {

// "1@0+4000 5@0!2 ..." : first fragment, time, and duration or discontinuity indicator.
std::string textOf(const std::vector<FragmentRunEntry>& entries) {
    std::string out;
    for (const FragmentRunEntry& entry : entries) {
        if (!out.empty()) out += " ";
        out += std::to_string(entry.firstFragment) + "@" +
               std::to_string(entry.firstFragmentTimestamp.value);
        out += entry.fragmentDuration != 0 ? "+" + std::to_string(entry.fragmentDuration)
                                           : "!" + std::to_string(entry.discontinuityIndicator);
    }
    return out;
}

// "1:3 2:0": segment and count of fragments.
std::string textOf(const std::vector<SegmentRunEntry>& entries) {
    std::string out;
    for (const SegmentRunEntry& entry : entries) {
        if (!out.empty()) out += " ";
        out += std::to_string(entry.firstSegment) + ":" + std::to_string(entry.fragmentsPerSegment);
    }
    return out;
}

std::string fragmentsOf(const BootstrapInfo& info) {
    return textOf(info.fragmentRunTables.at(0).entries);
}

std::string segmentsOf(const BootstrapInfo& info) {
    return textOf(info.segmentRunTables.at(0).entries);
}

BootstrapBuilder builderWith(double precision, std::uint32_t drift = 1000) {
    return BootstrapBuilder(precision, 1.0, drift);
}

std::uint32_t roundedBy(double precision, std::uint64_t duration) {
    BootstrapBuilder builder = builderWith(precision);
    builder.addFragment(1, 1, milliseconds(0), duration);
    return builder.bootstrap().fragmentRunTables[0].entries.at(0).fragmentDuration;
}

TEST(BootstrapBuilderTest, StartsWithOneEmptyTableOfEachKind) {
    const BootstrapBuilder builder;
    const BootstrapInfo full = builder.fullBootstrap();
    for (const BootstrapInfo* info : {&builder.bootstrap(), &full}) {
        EXPECT_EQ(info->version, 0U);
        ASSERT_EQ(info->segmentRunTables.size(), 1U);
        EXPECT_TRUE(info->segmentRunTables[0] == SegmentRunTable());
        ASSERT_EQ(info->fragmentRunTables.size(), 1U);
        EXPECT_TRUE(info->fragmentRunTables[0] == FragmentRunTable());
        EXPECT_EQ(info->fragmentRunTables[0].timescale, 1000U);
    }
    EXPECT_EQ(builder.durationPrecision(), 100.0);
    EXPECT_EQ(builder.frameDuration(), 1.0);
    EXPECT_EQ(builder.allowedDrift(), 1000U);
}

TEST(BootstrapBuilderTest, KeepsARunOfEqualDurationsInOneEntry) {
    BootstrapBuilder builder;
    for (std::uint32_t n = 1; n <= 50; ++n) {
        builder.addFragment(1, n, milliseconds((n - 1) * 4000), 4000);
    }
    EXPECT_EQ(fragmentsOf(builder.bootstrap()), "1@0+4000");
    EXPECT_EQ(segmentsOf(builder.bootstrap()), "1:50");
    EXPECT_EQ(builder.bootstrap().version, 1U);
    EXPECT_EQ(builder.fullBootstrap().fragmentRunTables[0].entries.size(), 50U);
    EXPECT_EQ(builder.fullBootstrap().version, 1U);
}

TEST(BootstrapBuilderTest, OpensAnEntryWhenTheRoundedDurationChangesByOneStep) {
    BootstrapBuilder builder;
    builder.addFragment(1, 1, milliseconds(0), 4049);     // 4000
    builder.addFragment(1, 2, milliseconds(4049), 4050);  // 4100
    EXPECT_EQ(fragmentsOf(builder.bootstrap()), "1@0+4000 2@4049+4100");
    EXPECT_EQ(builder.bootstrap().version, 2U);
}

TEST(BootstrapBuilderTest, RoundsATieUp) {
    EXPECT_EQ(roundedBy(100, 4049), 4000U);
    EXPECT_EQ(roundedBy(100, 4050), 4100U);
    EXPECT_EQ(roundedBy(100, 4099), 4100U);
    EXPECT_EQ(roundedBy(1, 4033), 4033U);
}

TEST(BootstrapBuilderTest, RoundsToMultiplesThatAreNoWholeMilliseconds) {
    // 60 frames of 33.36666... ms are 2002.0 ms, which the truncation may not make 2001.
    const double frame = 1001.0 / 30.0;
    EXPECT_EQ(roundedBy(frame, 2002), 2002U);
    // 2 x 33.36 = 66.73, truncated.
    EXPECT_EQ(roundedBy(frame, 70), 66U);
}

TEST(BootstrapBuilderTest, NeverRoundsToZero) {
    EXPECT_EQ(roundedBy(100, 49), 100U);
    EXPECT_EQ(roundedBy(100, 0), 100U);
}

TEST(BootstrapBuilderTest, StaysInTheRunAtExactlyTheAllowedDrift) {
    BootstrapBuilder late = builderWith(100, 1000);
    late.addFragment(1, 1, milliseconds(0), 4000);
    late.addFragment(1, 2, milliseconds(5000), 4000);
    EXPECT_EQ(fragmentsOf(late.bootstrap()), "1@0+4000");

    BootstrapBuilder later = builderWith(100, 1000);
    later.addFragment(1, 1, milliseconds(0), 4000);
    later.addFragment(1, 2, milliseconds(5001), 4000);
    EXPECT_EQ(fragmentsOf(later.bootstrap()), "1@0+4000 2@5001+4000");

    BootstrapBuilder early = builderWith(100, 1000);
    early.addFragment(1, 1, milliseconds(0), 4000);
    early.addFragment(1, 2, milliseconds(3000), 4000);
    early.addFragment(1, 3, milliseconds(6999), 4000);
    EXPECT_EQ(fragmentsOf(early.bootstrap()), "1@0+4000 3@6999+4000");
}

TEST(BootstrapBuilderTest, AddsUpSmallErrorsToADrift) {
    // Each fragment is 40 ms longer than its rounded duration; three are 120, a drift over 100.
    BootstrapBuilder builder = builderWith(100, 100);
    for (std::uint32_t n = 1; n <= 5; ++n) {
        builder.addFragment(1, n, milliseconds((n - 1) * 4040), 4040);
    }
    EXPECT_EQ(fragmentsOf(builder.bootstrap()), "1@0+4000 4@12120+4000");
}

TEST(BootstrapBuilderTest, RecordsAJumpOfThreeNumbersAsSkipped) {
    BootstrapBuilder builder;
    builder.addFragment(1, 1, milliseconds(0), 4000);
    builder.addFragment(1, 4, milliseconds(12000), 4000);
    EXPECT_EQ(fragmentsOf(builder.bootstrap()), "1@0+4000 2@0!2 4@12000+4000");
    EXPECT_EQ(segmentsOf(builder.bootstrap()), "1:4");
    EXPECT_EQ(builder.bootstrap().version, 3U);
    EXPECT_EQ(fragmentsOf(builder.fullBootstrap()), "1@0+4000 2@0!2 4@12000+4000");
}

TEST(BootstrapBuilderTest, CountsAFirstFragmentAboveOneAsOne) {
    BootstrapBuilder builder;
    builder.addFragment(1, 5, milliseconds(16000), 4000);
    EXPECT_EQ(fragmentsOf(builder.bootstrap()), "5@16000+4000");
    EXPECT_EQ(segmentsOf(builder.bootstrap()), "1:1");
}

TEST(BootstrapBuilderTest, LeavesNoTraceOfAGapBeforeTheFirstFragment) {
    BootstrapBuilder builder;
    builder.addDiscontinuity(1, 1, milliseconds(0));
    EXPECT_EQ(fragmentsOf(builder.bootstrap()), "");
    EXPECT_EQ(segmentsOf(builder.bootstrap()), "");
    EXPECT_EQ(builder.bootstrap().version, 0U);
    builder.addFragment(1, 2, milliseconds(4000), 4000);
    EXPECT_EQ(segmentsOf(builder.bootstrap()), "1:1");
}

TEST(BootstrapBuilderTest, MergesGapsInARowAndCountsTheirNumbers) {
    BootstrapBuilder builder;
    builder.addFragment(1, 1, milliseconds(0), 4000);
    builder.addDiscontinuity(1, 2, milliseconds(4000));
    builder.addDiscontinuity(1, 3, milliseconds(8000));
    EXPECT_EQ(fragmentsOf(builder.bootstrap()), "1@0+4000 2@4000!1");
    EXPECT_EQ(segmentsOf(builder.bootstrap()), "1:3");
    EXPECT_EQ(builder.bootstrap().version, 2U);
}

TEST(BootstrapBuilderTest, OpensARunBehindAGap) {
    BootstrapBuilder builder;
    builder.addFragment(1, 1, milliseconds(0), 4000);
    builder.addDiscontinuity(1, 2, milliseconds(4000));
    builder.addFragment(1, 3, milliseconds(8000), 4000);
    EXPECT_EQ(fragmentsOf(builder.bootstrap()), "1@0+4000 2@4000!1 3@8000+4000");
}

TEST(BootstrapBuilderTest, ExpectsBehindAGapWhatItExpectedAheadOfIt) {
    // With a precision below a millisecond a fragment can have the rounded duration 0, which is
    // the last duration behind a gap: then the expected time alone decides about a new entry.
    for (const bool isSkipped : {false, true}) {
        BootstrapBuilder builder = builderWith(0.5, 100);
        builder.addFragment(1, 1, milliseconds(0), 4000);  // 4000 is expected next
        if (!isSkipped) builder.addDiscontinuity(1, 2, milliseconds(8000));
        const std::string soFar = isSkipped ? "1@0+4000 2@0!2" : "1@0+4000 2@8000!1";
        builder.addFragment(1, 3, milliseconds(4100), 0);
        EXPECT_EQ(fragmentsOf(builder.bootstrap()), soFar);
        builder.addFragment(1, 4, milliseconds(4101), 0);
        EXPECT_EQ(fragmentsOf(builder.bootstrap()), soFar + " 4@4101!0");
    }
}

TEST(BootstrapBuilderTest, RecordsBothWhereAGapComesBehindAJump) {
    BootstrapBuilder builder;
    builder.addFragment(1, 1, milliseconds(0), 4000);
    builder.addDiscontinuity(1, 4, milliseconds(12000));
    EXPECT_EQ(fragmentsOf(builder.bootstrap()), "1@0+4000 2@0!2 4@12000!1");
    EXPECT_EQ(segmentsOf(builder.bootstrap()), "1:4");
}

TEST(BootstrapBuilderTest, MergesBothKindsWithAnEntryThatCountsForBoth) {
    for (const bool isGap : {true, false}) {
        BootstrapBuilder builder;
        builder.addFragment(1, 1, milliseconds(0), 4000);
        builder.addDiscontinuity(1, 2, milliseconds(4000));
        builder.bootstrap().fragmentRunTables[0].entries.back().discontinuityIndicator = 3;
        if (isGap) {
            builder.addDiscontinuity(1, 3, milliseconds(8000));
            EXPECT_EQ(fragmentsOf(builder.bootstrap()), "1@0+4000 2@4000!3");
        } else {
            builder.addFragment(1, 5, milliseconds(16000), 4000);
            EXPECT_EQ(fragmentsOf(builder.bootstrap()), "1@0+4000 2@4000!3 5@16000+4000");
        }
    }
}

TEST(BootstrapBuilderTest, CountsAGapOfTheSameNumberNoSecondTime) {
    BootstrapBuilder builder;
    builder.addFragment(1, 1, milliseconds(0), 4000);
    builder.addDiscontinuity(1, 1, milliseconds(0));
    EXPECT_EQ(segmentsOf(builder.bootstrap()), "1:1");
}

TEST(BootstrapBuilderTest, TakesNumbersOffTheCountWhereAGapFallsBack) {
    BootstrapBuilder builder;
    for (std::uint32_t n = 1; n <= 5; ++n) {
        builder.addFragment(1, n, milliseconds((n - 1) * 4000), 4000);
    }
    builder.addDiscontinuity(1, 2, milliseconds(4000));
    EXPECT_EQ(segmentsOf(builder.bootstrap()), "1:2");
    EXPECT_EQ(segmentsOf(builder.fullBootstrap()), "1:2");
}

TEST(BootstrapBuilderTest, CountsAGapInTheLastSegmentThatHasAnEntry) {
    BootstrapBuilder builder;
    builder.addFragment(1, 1, milliseconds(0), 4000);
    builder.addDiscontinuity(2, 2, milliseconds(4000));
    EXPECT_EQ(segmentsOf(builder.bootstrap()), "1:2");
    builder.addFragment(2, 3, milliseconds(8000), 4000);
    EXPECT_EQ(segmentsOf(builder.bootstrap()), "1:2 2:1");
}

TEST(BootstrapBuilderTest, CountsSkippedNumbersInTheSegmentBehindThem) {
    BootstrapBuilder builder;
    builder.addFragment(1, 1, milliseconds(0), 4000);
    builder.addFragment(2, 4, milliseconds(12000), 4000);
    EXPECT_EQ(segmentsOf(builder.bootstrap()), "1:1 2:3");
    builder.addDiscontinuity(4, 7, milliseconds(24000));
    EXPECT_EQ(segmentsOf(builder.bootstrap()), "1:1 2:3 3:0 4:3");
    EXPECT_EQ(segmentsOf(builder.fullBootstrap()), "1:1 2:3 3:0 4:3");
}

TEST(BootstrapBuilderTest, HasAnEntryForEverySegment) {
    BootstrapBuilder builder;
    builder.addFragment(1, 1, milliseconds(0), 4000);
    builder.addFragment(4, 2, milliseconds(4000), 4000);
    EXPECT_EQ(segmentsOf(builder.bootstrap()), "1:1 2:0 3:0 4:1");
    EXPECT_EQ(fragmentsOf(builder.bootstrap()), "1@0+4000");
    EXPECT_EQ(builder.bootstrap().version, 1U);
}

TEST(BootstrapBuilderTest, MarksTheEndInTheCompressedTableOnly) {
    BootstrapBuilder builder;
    builder.addFragment(1, 1, milliseconds(0), 4000);
    builder.markEnd();
    EXPECT_EQ(fragmentsOf(builder.bootstrap()), "1@0+4000 0@0!0");
    EXPECT_EQ(fragmentsOf(builder.fullBootstrap()), "1@0+4000");
    EXPECT_EQ(builder.bootstrap().version, 1U);
}

TEST(BootstrapBuilderTest, HasOnlyTheEndMarkWhenNothingButAGapCame) {
    BootstrapBuilder builder;
    builder.addDiscontinuity(1, 1, milliseconds(0));
    builder.markEnd();
    EXPECT_EQ(fragmentsOf(builder.bootstrap()), "0@0!0");
    EXPECT_EQ(segmentsOf(builder.bootstrap()), "");
    EXPECT_EQ(builder.bootstrap().version, 0U);
}

TEST(BootstrapBuilderTest, SkipsFromTheNumberBehindTheLastOne) {
    // The next number may not be above the last skipped one, as when numbers fall back.
    BootstrapBuilder builder;
    builder.addFragment(1, 7, milliseconds(24000), 4000);
    builder.addFragment(1, 3, milliseconds(8000), 4000);
    builder.addFragment(1, 5, milliseconds(16000), 4000);
    EXPECT_EQ(fragmentsOf(builder.bootstrap()), "7@24000+4000 3@8000+4000 4@0!2 5@16000+4000");
    EXPECT_EQ(segmentsOf(builder.bootstrap()), "1:4");
}

TEST(BootstrapBuilderTest, RoundsHugeAndSenselessDurationsWithoutHarm) {
    // 2^64 / 100 is 0x28F5C28F5C28F60 as a double; (0xF5C28F60 + 1) x 100 is 0x60000001E4.
    EXPECT_EQ(roundedBy(100, 0xFFFFFFFFFFFFFFFF), 0x1E4U);
    EXPECT_EQ(roundedBy(0, 4000), 0U);
}

}  // namespace
}  // namespace torvo::kzs
