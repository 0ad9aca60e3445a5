#include "offline/FragmentTiming.h"

#include <cmath>
#include <limits>

#include "kzs/base/ByteOrder.h"
#include "kzs/base/Truncation.h"
#include "offline/OfflineException.h"

namespace torvo::offline {
namespace {

constexpr double kTwoTo63 = 9223372036854775808.0;
constexpr double kTimeBasedFramePeriod = 0.001;  // seconds

/// A count option as a 32-bit number: truncated, limited to 64 bits, then its low 32 bits.
std::uint32_t countOf(const OptionMap& options, const char* key, const char* messageForZero) {
    const double value = numberOf(options, key);
    std::int64_t whole = 0;
    if (value >= kTwoTo63) {
        whole = std::numeric_limits<std::int64_t>::max();
    } else if (value < -kTwoTo63) {
        whole = std::numeric_limits<std::int64_t>::min();
    } else if (!std::isnan(value)) {
        whole = static_cast<std::int64_t>(value);
    }
    const auto count = static_cast<std::uint32_t>(whole);
    if (count == 0) throw StdErrorException(messageForZero);
    return count;
}

void requireUsable(const FragmentTiming& timing) {
    if (timing.fragmentDuration == 0) {
        throw StdErrorException("invalid fragment duration specified");
    }
    if (!(timing.durationPrecision > 0.0)) {
        throw StdErrorException("invalid duration precision specified");
    }
}

/// Replaces duration and precision by the frame-based ones.
void applyFrames(const OptionMap& options, double framePeriod, FragmentTiming& timing) {
    if (framePeriod == 0.0) throw StdErrorException("invalid frame rate specified");
    const std::uint32_t framesPerInterval =
        countOf(options, "frames-per-keyframe-interval",
                "no value specified for frames-per-keyframe-interval");
    const std::uint32_t intervals =
        countOf(options, "keyframe-intervals-per-fragment",
                "no value specified for keyframe-intervals-per-fragment");
    const auto precision = static_cast<std::int32_t>(
        countOf(options, "frame-precision", "no value specified for frame precision"));
    // On purpose: the count of frames is a 32-bit product, and the order of the factors decides
    // the last digits.
    // Pinned by FragmentTimingTest.TheCountOfFramesIsA32BitProduct and
    // .TheOrderOfTheFactorsDecidesTheLastDigits.
    const std::uint32_t frames = framesPerInterval * intervals;
    timing.fragmentDuration =
        kzs::low32(kzs::truncated(static_cast<double>(frames) * framePeriod * 1000.0));
    timing.durationPrecision = static_cast<double>(precision) * framePeriod * 1000.0;
}

}  // namespace

std::uint32_t toMilliseconds(double seconds) {
    return kzs::low32(kzs::truncated(seconds * 1000.0));
}

FragmentTiming fragmentTimingOf(const OptionMap& options) {
    FragmentTiming timing;
    timing.fragmentDuration = toMilliseconds(numberOf(options, "fragment-duration"));
    // On purpose: the precision too goes through whole milliseconds.
    // Pinned by FragmentTimingTest.SecondsAreTruncatedToMilliseconds.
    timing.durationPrecision = toMilliseconds(numberOf(options, "duration-precision"));
    timing.allowedDrift = toMilliseconds(numberOf(options, "allowed-drift"));
    // On purpose: also when frame-based values are about to replace these two.
    // Pinned by FragmentTimingTest.AZeroFragmentDurationFailsEvenWithFrameBasedValues.
    requireUsable(timing);

    double framePeriod = kTimeBasedFramePeriod;
    // On purpose: without a rate above 0 the three other options on frames aren't looked at.
    // Pinned by FragmentTimingTest.AFrameRateOfZeroOrLessLeavesTheFrameValuesAlone.
    const double frameRate = numberOf(options, "frame-rate");
    if (frameRate > 0.0) {
        framePeriod = 1.0 / frameRate;
        applyFrames(options, framePeriod, timing);
        // A fragment of less than a millisecond would divide by zero.
        requireUsable(timing);
    }
    timing.frameDuration = framePeriod * 1000.0;
    return timing;
}

}  // namespace torvo::offline
