#include "kzm/impl/PresentationIter.h"

#include <limits>
#include <utility>

#include "kzm/ErrorCode.h"

namespace qlix::kzm::impl {

PresentationIter::PresentationIter(std::vector<Edit> edits, std::uint64_t end,
                                   MediaIterCreator creator)
    : edits_(std::move(edits)), end_(end), creator_(std::move(creator)) {
    enterEdit();
    waiting_ = fetch();
}

bool PresentationIter::hasSample() { return waiting_ && waiting_->time < end_; }

Sample PresentationIter::next() {
    if (!hasSample()) raise(ErrorCode::badArgument);
    Sample sample = std::move(*waiting_);
    waiting_ = fetch();
    return sample;
}

std::optional<Sample> PresentationIter::fetch() {
    while (edit_ < edits_.size()) {
        const Edit& edit = edits_[edit_];
        const std::uint64_t start = inMedia(edit.presentationStart);
        if (edit.isEmpty()) {
            nextEdit();
            return creator_.marker(start);
        }
        if (!inner_->hasSample()) {
            nextEdit();
            continue;
        }
        Sample sample = inner_->next();
        const auto mediaTime = static_cast<std::uint64_t>(edit.mediaTime);
        if (sample.time < mediaTime) continue;
        sample.time += start - mediaTime;
        if (sample.time < inMedia(edit.presentationEnd())) return sample;
        nextEdit();
    }
    return std::nullopt;
}

void PresentationIter::nextEdit() {
    ++edit_;
    enterEdit();
}

void PresentationIter::enterEdit() {
    inner_.reset();
    if (edit_ >= edits_.size() || edits_[edit_].isEmpty()) return;
    const std::uint32_t timescale = creator_.track().record().timescale;
    // Up to the end of the media: where the edit ends is told by the presentation times.
    inner_ = creator_.create({{static_cast<std::uint64_t>(edits_[edit_].mediaTime), timescale},
                              {std::numeric_limits<std::uint64_t>::max(), timescale}});
}

std::uint64_t PresentationIter::inMedia(std::uint64_t movieTicks) const {
    return rescale(movieTicks, creator_.track().movieTimescale(),
                   creator_.track().record().timescale);
}

}  // namespace qlix::kzm::impl
