#pragma once

#include "kzm/impl/Box.h"
#include "kzm/impl/MfhdBox.h"

namespace qlix::kzm::impl {

/// Movie fragment: its header, then a `traf` for each track with samples.
///
///   offset  size  field
///        0     8  box header: 'moof'
///        8    16  'mfhd'
///       24     .  'traf' boxes
class MoofBox final : public Box {
public:
    /// Makes the `mfhd` too.
    MoofBox(const BoxContext& context, std::uint32_t sequenceNumber);
    MoofBox(const BoxContext& context, const BoxHeader& header);

    void addChild(BoxPtr child) override;
    RequiredChildren requiredChildren() const override { return requiredChildrenOf(type()); }
    /// Parses the children and lets each `traf` know those before it, by whose data and times it
    /// goes on; with a root the end of each track becomes known to the fragments behind.
    void readChildren(RootBox* root, bool validate) override;

    /// Null when there is none.
    const MfhdBox* mfhd() const { return mfhd_; }

private:
    MfhdBox* mfhd_ = nullptr;  // one of the children
};

}  // namespace qlix::kzm::impl
