#pragma once

#include <cstdint>
#include <memory>

#include "kzm/impl/Box.h"
#include "kzm/impl/MfhdBox.h"

namespace qlix::kzm::impl {

class MoofBox;

struct LetMoofGo {
    void operator()(MoofBox* moof) const noexcept;
};

/// Keeps what is inside a `moof` in memory; see MoofBox::hold.
using MoofHold = std::unique_ptr<MoofBox, LetMoofGo>;

/// Movie fragment: its header, then a `traf` for each track with samples.
///
///   offset  size  field
///        0     8  box header: 'moof'
///        8    16  'mfhd'
///       24     .  'traf' boxes
///
/// A recording has thousands of fragments, of which one or two are in use at a time. So a box
/// destroys its children when the last hold on it ends, and reads them from the file again for the
/// next one; after the eighth reading they stay. Pointers to the boxes inside are good as long as a
/// hold lives. Until the first hold the box is whole.
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

    /// Null when there is none, or nothing inside at the time.
    const MfhdBox* mfhd() const { return mfhd_; }

    /// Keeps what is inside as long as the answer lives, and reads it again if it isn't there.
    /// `root` is the document that the box is a child of; the box outlives the hold.
    ///
    /// Throws what reading throws, and childrenMissing when the file has other boxes there than
    /// the first time; then nothing is inside.
    MoofHold hold(RootBox& root);
    /// Whether anything is inside at the time.
    bool isWhole() const { return isWhole_; }

private:
    friend struct LetMoofGo;

    void readAgain(RootBox& root);
    void letGo() noexcept;
    void empty() noexcept;

    MfhdBox* mfhd_ = nullptr;              // one of the children
    BoxVector<std::uint64_t> startTimes_;  // of each `traf` in order, since the first reading
    std::uint32_t holds_ = 0;
    std::uint32_t readings_ = 0;
    bool isWhole_ = true;
};

}  // namespace qlix::kzm::impl
