#include "kzm/impl/EditList.h"

#include <algorithm>
#include <limits>

#include "kzm/impl/Rescale.h"

namespace qlix::kzm::impl {
namespace {

void cutFront(Edit& edit, const ScaledTime& start, std::uint32_t movie, std::uint32_t media) {
    const std::uint64_t startTicks = rescale(start.value, start.timescale, media);
    const std::uint64_t ownTicks = rescale(edit.presentationStart, movie, media);
    if (startTicks <= ownTicks) return;
    const std::uint64_t cut = std::min(rescale(startTicks - ownTicks, media, movie), edit.duration);
    edit.duration -= cut;
    edit.mediaTime += static_cast<std::int64_t>(std::min<std::uint64_t>(
        rescale(cut, movie, media),
        static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max() - edit.mediaTime)));
    edit.presentationStart += cut;
}

}  // namespace

std::uint64_t Edit::presentationEnd() const {
    const std::uint64_t end = presentationStart + duration;
    return end < duration ? std::numeric_limits<std::uint64_t>::max() : end;
}

bool operator==(const Edit& left, const Edit& right) {
    return left.duration == right.duration && left.mediaTime == right.mediaTime &&
           left.rateInteger == right.rateInteger && left.rateFraction == right.rateFraction &&
           left.presentationStart == right.presentationStart;
}

std::vector<Edit> clippedAt(const std::vector<Edit>& edits, const ScaledTime& start,
                            std::uint32_t movieTimescale, std::uint32_t mediaTimescale) {
    const std::uint64_t startTicks = rescale(start.value, start.timescale, movieTimescale);
    const auto first = std::find_if(edits.begin(), edits.end(), [startTicks](const Edit& edit) {
        return edit.presentationEnd() > startTicks;
    });
    std::vector<Edit> out(first, edits.end());
    if (!out.empty() && out.front().mediaTime >= 0) {
        cutFront(out.front(), start, movieTimescale, mediaTimescale);
    }
    return out;
}

}  // namespace qlix::kzm::impl
