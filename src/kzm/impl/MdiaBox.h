#pragma once

#include "kzm/impl/HdlrBox.h"
#include "kzm/impl/MdhdBox.h"
#include "kzm/impl/MinfBox.h"

namespace qlix::kzm::impl {

/// Media: `mdhd`, `hdlr` and `minf`.
class MdiaBox final : public Box {
public:
    /// Makes the children too.
    MdiaBox(const BoxContext& context, const TrackSettings& settings);
    MdiaBox(const BoxContext& context, const BoxHeader& header);

    void addChild(BoxPtr child) override;
    RequiredChildren requiredChildren() const override { return requiredChildrenOf(type()); }
    /// Reads the sample descriptions once more when the handler, which decides their classes, is
    /// known.
    void readChildren(RootBox* root, bool validate) override;

    /// Null when there is none.
    MdhdBox* mdhd() const { return mdhd_; }
    HdlrBox* hdlr() const { return hdlr_; }
    MinfBox* minf() const { return minf_; }

private:
    MdhdBox* mdhd_ = nullptr;  // all three are children
    HdlrBox* hdlr_ = nullptr;
    MinfBox* minf_ = nullptr;
};

}  // namespace qlix::kzm::impl
