#pragma once

#include <cstdint>

#include "offline/OptionMap.h"

namespace torvo::offline {

/// The timing that a job is cut and described by, in milliseconds.
struct FragmentTiming {
    std::uint32_t fragmentDuration = 0;  ///< target length of a fragment, never 0 once derived
    double frameDuration = 0.0;          ///< length of a frame; 1.0 for time-based settings
    double durationPrecision = 0.0;      ///< the unit to which durations are rounded, above 0
    std::uint32_t allowedDrift = 0;      ///< how far rounded times may stray from real ones
};

/// Derives the timing from the options. A `frame-rate` above 0 puts the frame-based options in
/// the place of `fragment-duration` and `duration-precision`, which must be valid all the same.
/// Throws StdErrorException where a value can't be used.
FragmentTiming fragmentTimingOf(const OptionMap& options);

/// Seconds in milliseconds, truncated towards zero: the low 32 bits of the whole number.
///
/// On purpose: a negative value wraps, so -1 s is 4294966296. A value that is not finite, or of
/// 2^63 ms and more in size, is 0.
/// Pinned by FragmentTimingTest.NegativeSecondsWrapTo32Bits and
/// .ValuesThatAreNoNumberOfMillisecondsAreZero.
std::uint32_t toMilliseconds(double seconds);

}  // namespace torvo::offline
