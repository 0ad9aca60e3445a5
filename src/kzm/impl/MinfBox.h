#pragma once

#include "kzm/impl/DinfBox.h"
#include "kzm/impl/StblBox.h"

namespace qlix::kzm::impl {

/// Media information: the media header, `dinf` and `stbl`.
class MinfBox final : public Box {
public:
    /// Makes the children too: `hmhd` for a hint track, `smhd` for sound, `vmhd` for video, `nmhd`
    /// for all others, then `dinf` and `stbl`.
    MinfBox(const BoxContext& context, const TrackSettings& settings);
    MinfBox(const BoxContext& context, const BoxHeader& header);

    void addChild(BoxPtr child) override;
    RequiredChildren requiredChildren() const override { return requiredChildrenOf(type()); }

    /// Null when there is none.
    DinfBox* dinf() const { return dinf_; }
    StblBox* stbl() const { return stbl_; }

private:
    DinfBox* dinf_ = nullptr;  // both are children
    StblBox* stbl_ = nullptr;
};

}  // namespace qlix::kzm::impl
