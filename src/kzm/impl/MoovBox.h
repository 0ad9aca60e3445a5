#pragma once

#include <vector>

#include "kzm/impl/MvexBox.h"
#include "kzm/impl/MvhdBox.h"
#include "kzm/impl/TrakBox.h"

namespace qlix::kzm::impl {

/// The movie: `mvhd`, a `trak` for each track, `mvex` in a fragmented file.
class MoovBox final : public Box {
public:
    /// Without children.
    explicit MoovBox(const BoxContext& context) : Box(context, fourCc("moov")) {}
    MoovBox(const BoxContext& context, const BoxHeader& header);

    void addChild(BoxPtr child) override;
    RequiredChildren requiredChildren() const override { return requiredChildrenOf(type()); }

    /// Null when there is none.
    MvhdBox* mvhd() const { return mvhd_; }
    /// The tracks in file order; they are children.
    const std::vector<TrakBox*>& tracks() const { return tracks_; }
    /// Whether samples may stand in fragments.
    bool isFragmented() const { return mvex_ != nullptr; }
    /// Null when there is none.
    MvexBox* mvex() const { return mvex_; }

private:
    MvhdBox* mvhd_ = nullptr;  // both are children
    MvexBox* mvex_ = nullptr;
    std::vector<TrakBox*> tracks_;
};

}  // namespace qlix::kzm::impl
