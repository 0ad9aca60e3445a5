#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include "offline/FragmentTiming.h"
#include "offline/OfflineException.h"
#include "offline/OptionFixture.h"

namespace torvo::offline {
namespace {

FragmentTiming timingWith(const OptionMap& replaced) {
    return fragmentTimingOf(defaultsWith(replaced));
}

std::string failureWith(const OptionMap& replaced) {
    try {
        timingWith(replaced);
        return "passes";
    } catch (const StdErrorException& failure) {
        EXPECT_EQ(failure.code(), 12);
        return failure.text().substr(std::string("Standard Exception: ").size());
    }
}

TEST(FragmentTimingTest, DefaultsAreFourSecondsTenthsAndOneSecond) {
    const FragmentTiming timing = timingWith({});
    EXPECT_EQ(timing.fragmentDuration, 4000U);
    EXPECT_EQ(timing.frameDuration, 1.0);
    EXPECT_EQ(timing.durationPrecision, 100.0);
    EXPECT_EQ(timing.allowedDrift, 1000U);
}

TEST(FragmentTimingTest, SecondsAreTruncatedToMilliseconds) {
    EXPECT_EQ(toMilliseconds(0.0015), 1U);
    EXPECT_EQ(toMilliseconds(1.9999), 1999U);
    EXPECT_EQ(timingWith({{"duration-precision", 0.0015}}).durationPrecision, 1.0);
    EXPECT_EQ(failureWith({{"fragment-duration", 0.0004}}), "invalid fragment duration specified");
    EXPECT_EQ(failureWith({{"duration-precision", 0.0009}}),
              "invalid duration precision specified");
}

TEST(FragmentTimingTest, NegativeSecondsWrapTo32Bits) {
    EXPECT_EQ(toMilliseconds(-1.0), 4294966296U);
    EXPECT_EQ(timingWith({{"fragment-duration", -1.0}}).fragmentDuration, 4294966296U);
    EXPECT_EQ(timingWith({{"allowed-drift", -1.0}}).allowedDrift, 4294966296U);
}

TEST(FragmentTimingTest, ValuesThatAreNoNumberOfMillisecondsAreZero) {
    for (const double value : {std::nan(""), std::numeric_limits<double>::infinity(),
                               -std::numeric_limits<double>::infinity(), 1e30, -1e30}) {
        EXPECT_EQ(toMilliseconds(value), 0U) << value;
        EXPECT_EQ(failureWith({{"fragment-duration", value}}),
                  "invalid fragment duration specified");
    }
}

TEST(FragmentTimingTest, FrameBasedValuesReplaceTheTimeBasedOnes) {
    const FragmentTiming timing = timingWith({{"frame-rate", 30.0},
                                              {"frames-per-keyframe-interval", 30.0},
                                              {"keyframe-intervals-per-fragment", 2.0}});
    EXPECT_EQ(timing.fragmentDuration, 2000U);
    EXPECT_NEAR(timing.frameDuration, 33.333333333333, 1e-9);
    EXPECT_NEAR(timing.durationPrecision, 33.333333333333, 1e-9);
    EXPECT_EQ(timing.allowedDrift, 1000U);
}

TEST(FragmentTimingTest, EachMissingFrameValueIsNamed) {
    const boost::any rate = 25.0;
    const boost::any some = 10.0;
    EXPECT_EQ(failureWith({{"frame-rate", rate}}),
              "no value specified for frames-per-keyframe-interval");
    EXPECT_EQ(failureWith({{"frame-rate", rate}, {"frames-per-keyframe-interval", 0.5}}),
              "no value specified for frames-per-keyframe-interval");
    EXPECT_EQ(failureWith({{"frame-rate", rate},
                           {"frames-per-keyframe-interval", some},
                           {"keyframe-intervals-per-fragment", 0.0}}),
              "no value specified for keyframe-intervals-per-fragment");
    EXPECT_EQ(failureWith({{"frame-rate", rate},
                           {"frames-per-keyframe-interval", some},
                           {"frame-precision", 0.9}}),
              "no value specified for frame precision");
    EXPECT_EQ(failureWith({{"frame-rate", std::numeric_limits<double>::infinity()},
                           {"frames-per-keyframe-interval", some}}),
              "invalid frame rate specified");
}

TEST(FragmentTimingTest, AFrameRateOfZeroOrLessLeavesTheFrameValuesAlone) {
    for (const double rate : {0.0, -5.0, std::nan("")}) {
        const FragmentTiming timing = timingWith({{"frame-rate", rate}, {"frame-precision", 0.0}});
        EXPECT_EQ(timing.fragmentDuration, 4000U) << rate;
        EXPECT_EQ(timing.frameDuration, 1.0) << rate;
    }
}

TEST(FragmentTimingTest, AZeroFragmentDurationFailsEvenWithFrameBasedValues) {
    EXPECT_EQ(failureWith({{"fragment-duration", 0.0},
                           {"frame-rate", 25.0},
                           {"frames-per-keyframe-interval", 50.0}}),
              "invalid fragment duration specified");
}

TEST(FragmentTimingTest, FrameBasedValuesThatComeToNothingFailToo) {
    EXPECT_EQ(failureWith({{"frame-rate", 5000.0}, {"frames-per-keyframe-interval", 1.0}}),
              "invalid fragment duration specified");
    EXPECT_EQ(failureWith({{"frame-rate", 25.0},
                           {"frames-per-keyframe-interval", 50.0},
                           {"frame-precision", -1.0}}),
              "invalid duration precision specified");
}

TEST(FragmentTimingTest, TheCountOfFramesIsA32BitProduct) {
    // 65536 * 65537 = 2^32 + 65536, which leaves 65536 frames, of which 2048 take a second. All of
    // them would be 2097184 s, whose milliseconds have room in 32 bits, too.
    const FragmentTiming timing = timingWith({{"frame-rate", 2048.0},
                                              {"frames-per-keyframe-interval", 65536.0},
                                              {"keyframe-intervals-per-fragment", 65537.0}});
    EXPECT_EQ(timing.fragmentDuration, 32000U);
}

TEST(FragmentTimingTest, ACountThatIsNoNumberIsMissing) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    EXPECT_EQ(failureWith({{"frame-rate", 25.0}, {"frames-per-keyframe-interval", nan}}),
              "no value specified for frames-per-keyframe-interval");
}

TEST(FragmentTimingTest, CountsBeyond32BitsKeepTheirLowBits) {
    const auto durationFor = [](double frames) {
        return timingWith({{"frame-rate", 1000.0}, {"frames-per-keyframe-interval", frames}})
            .fragmentDuration;
    };
    EXPECT_EQ(durationFor(4294967299.0), 3U);
    EXPECT_EQ(durationFor(-5.0), 4294967291U);
    // Limited to 63 bits, all of which are set.
    EXPECT_EQ(durationFor(1e30), 4294967295U);
    EXPECT_EQ(failureWith({{"frame-rate", 1000.0}, {"frames-per-keyframe-interval", -1e30}}),
              "no value specified for frames-per-keyframe-interval");
}

TEST(FragmentTimingTest, TheOrderOfTheFactorsDecidesTheLastDigits) {
    // 803 x 0.04 is a little less than 32.12; 803 x (0.04 x 1000) would be 32120.
    const FragmentTiming timing =
        timingWith({{"frame-rate", 25.0}, {"frames-per-keyframe-interval", 803.0}});
    EXPECT_EQ(timing.fragmentDuration, 32119U);
}

}  // namespace
}  // namespace torvo::offline
