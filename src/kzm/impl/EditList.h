#pragma once

#include <cstdint>
#include <vector>

namespace qlix::kzm::impl {

/// Media time of a row that shows nothing for its duration.
constexpr std::int64_t kEmptyEdit = -1;

/// One row of an edit list: a stretch of the presentation.
struct Edit {
    std::uint64_t duration = 0;  ///< in ticks of the movie
    std::int64_t mediaTime = 0;  ///< in ticks of the media; kEmptyEdit for none
    std::int16_t rateInteger = 1;
    std::int16_t rateFraction = 0;
    std::uint64_t presentationStart = 0;  ///< ticks of the movie: the sum of the rows before

    /// On purpose: a media time of all ones, and also of all ones less 1.
    /// Pinned by EditTest.IsEmptyFromAllOnesLessOneOn.
    bool isEmpty() const { return static_cast<std::uint64_t>(mediaTime) >= 0xFFFFFFFFFFFFFFFE; }
    /// Held at the largest value where the sum doesn't fit.
    std::uint64_t presentationEnd() const;
};

bool operator==(const Edit& left, const Edit& right);

/// A time and the ticks a second that it counts.
struct ScaledTime {
    std::uint64_t value = 0;
    std::uint32_t timescale = 1;
};

/// The rows of `edits` that show something at or after `start`; of the first one the part before
/// it is cut off, unless it is empty. Throws noTimescale when a timescale is 0.
std::vector<Edit> clippedAt(const std::vector<Edit>& edits, const ScaledTime& start,
                            std::uint32_t movieTimescale, std::uint32_t mediaTimescale);

}  // namespace qlix::kzm::impl
