#pragma once

#include <cstddef>
#include <cstdint>
#include <map>

#include "kzm/impl/Box.h"
#include "kzm/impl/MehdBox.h"

namespace qlix::kzm::impl {

class TrexBox;

/// Says that a movie is fragmented.
///
///   offset  size  field
///        0     8  box header: 'mvex'
///        8    20  'mehd'
///       28    32  'trex' for each track
class MvexBox final : public Box {
public:
    /// Makes the `mehd` too.
    MvexBox(const BoxContext& context, std::uint64_t duration);
    MvexBox(const BoxContext& context, const BoxHeader& header);

    void addChild(BoxPtr child) override;
    /// On purpose: whatever its children are, the box passes; many files have no `mehd`.
    /// Pinned by MvexBoxTest.IsNeverRefusedForItsChildren.
    bool verifyChildren() const override { return true; }

    /// Null when there is none.
    MehdBox* mehd() const { return mehd_; }
    /// The defaults of a track, or null.
    const TrexBox* defaultsOf(std::uint32_t trackId);

private:
    void indexDefaults();

    MehdBox* mehd_ = nullptr;  // one of the children
    // The first `trex` of each id, found when it is first asked for: ids are known once the
    // children have been read.
    std::map<std::uint32_t, const TrexBox*> defaults_;
    std::size_t indexedChildren_ = 0;
};

}  // namespace qlix::kzm::impl
