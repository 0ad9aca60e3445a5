#pragma once

#include <cstdint>

#include "kzs/base/ByteOrder.h"

namespace torvo::kzs {

/// The cell of a time: cell 1 covers [0, F), cell i covers [(i - 1) x F, i x F). A time on a line
/// belongs to the later cell, on purpose. Pinned by
/// AVFragmenterTest.PutsASampleOnALineIntoTheLaterCell.
constexpr std::uint64_t cellOf(std::uint64_t time, std::uint32_t fragmentDuration) {
    return time / fragmentDuration + 1;
}

/// The number of the fragment that starts at `startValue`, which on purpose is taken as it stands
/// whatever its timescale. Pinned by AVFragmenterTest.NumbersByTheBareValueOfTheStart.
constexpr std::uint32_t fragmentNumberOf(std::uint64_t startValue, std::uint32_t fragmentDuration) {
    return low32(cellOf(startValue, fragmentDuration));
}

/// The cell that the first sample of an input finds open. On purpose it is the one before when the
/// sample is on a line, which the sample then counts as crossing at once.
/// Pinned by AVFragmenterTest.CrossesTheLineOnWhichTheFirstSampleLies.
constexpr std::uint64_t firstOpenCell(std::uint64_t time, std::uint32_t fragmentDuration) {
    return cellOf(time, fragmentDuration) - (time % fragmentDuration == 0 ? 1 : 0);
}

}  // namespace torvo::kzs
