#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <utility>
#include <vector>

#include "kzs/base/Timestamp.h"

namespace torvo::kzs {

/// The offset of a fragment number that has no data of its own.
constexpr std::uint64_t kNoFragmentData = 0xFFFFFFFFFFFFFFFF;

/// One row of the index. A local entry uses time and offset, a global one all but the offset.
struct AfraEntry {
    Timestamp time;
    std::uint64_t offset = 0;
    std::uint32_t segment = 0;
    std::uint32_t fragment = 0;
    std::uint64_t afraOffset = 0;  ///< bytes from the start of the segment file, or kNoFragmentData
    std::uint64_t offsetFromAfra = 0;
};

/// Where the fragments lie (`afra`): entries in the order in which they were added.
struct AfraIndex {
    /// More global entries than this are never made by filling: a leap in the time stamps with
    /// short fragments would otherwise take all memory.
    static constexpr std::size_t kMaxFilledEntries = 16'000'000;

    bool longIds = true;      ///< ids take 4 bytes in a file, else the low 2
    bool longOffsets = true;  ///< offsets take 8 bytes in a file, else the low 4
    std::uint32_t timescale = 1000;
    std::vector<AfraEntry> localEntries;
    /// Not a vector: a long recording has very many, and the moment at which a vector grows, with
    /// two copies of all of them, would be the run's peak of memory.
    std::deque<AfraEntry> globalEntries;

    /// Appends an entry without data for each fragment number between the last one and `number`,
    /// with the last entry's time and `currentSegment`. An empty list stays empty.
    /// Throws std::length_error beyond kMaxFilledEntries.
    void fillMissingFragments(std::uint32_t number, std::uint32_t currentSegment);

    /// The first two neighbours among the global entries whose fragment numbers aren't
    /// consecutive, earlier one first; nothing when the list is dense.
    ///
    /// The first `checked` entries are known to be dense from a check before: entries are only
    /// appended, and their fragment numbers never change.
    std::optional<std::pair<std::uint32_t, std::uint32_t>> firstBreak(
        std::size_t checked = 0) const;
};

bool operator==(const AfraEntry& left, const AfraEntry& right);
bool operator==(const AfraIndex& left, const AfraIndex& right);

}  // namespace torvo::kzs
