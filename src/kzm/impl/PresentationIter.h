#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <vector>

#include "kzm/Sample.h"
#include "kzm/impl/EditList.h"
#include "kzm/impl/MediaIterCreator.h"

namespace qlix::kzm::impl {

/// Walks the samples of a track as its edit list presents them: each edit shows the samples of
/// its stretch of the media at its place in the presentation, an empty one gives a marker.
///
/// Decode times alone are compared with the bounds of an edit.
class PresentationIter final : public SampleIterator {
public:
    /// `end` is in ticks of the media: samples at or behind it end the walk.
    PresentationIter(std::vector<Edit> edits, std::uint64_t end, MediaIterCreator creator);

    bool hasSample() override;
    Sample next() override;

private:
    std::optional<Sample> fetch();
    void nextEdit();
    void enterEdit();
    std::uint64_t inMedia(std::uint64_t movieTicks) const;

    std::vector<Edit> edits_;
    std::size_t edit_ = 0;
    std::uint64_t end_;
    MediaIterCreator creator_;
    std::unique_ptr<SampleIterator> inner_;  // null in an empty edit
    std::optional<Sample> waiting_;
};

}  // namespace qlix::kzm::impl
