#pragma once

#include "kzm/impl/EdtsBox.h"
#include "kzm/impl/MdiaBox.h"
#include "kzm/impl/TkhdBox.h"
#include "kzm/impl/TrefBox.h"

namespace qlix::kzm::impl {

/// A track: `tkhd`, `tref` if it is a hint track, `mdia`, `edts`.
class TrakBox final : public Box {
public:
    /// Makes the whole tree. Throws noTimescale when the timescale of the track is 0.
    TrakBox(const BoxContext& context, const TrackSettings& settings);
    TrakBox(const BoxContext& context, const BoxHeader& header);

    void addChild(BoxPtr child) override;
    RequiredChildren requiredChildren() const override { return requiredChildrenOf(type()); }
    void readChildren(RootBox* root, bool validate) override;

    /// 0 as long as no handler was read.
    std::uint32_t handler() const { return handler_; }
    /// 0 without a `tkhd`.
    std::uint32_t trackId() const { return tkhd_ != nullptr ? tkhd_->track().trackId : 0; }

    /// Null when there is none.
    TkhdBox* tkhd() const { return tkhd_; }
    TrefBox* tref() const { return tref_; }
    MdiaBox* mdia() const { return mdia_; }
    EdtsBox* edts() const { return edts_; }
    /// Reach through the boxes between; null where one is missing.
    MdhdBox* mdhd() const { return mdia_ != nullptr ? mdia_->mdhd() : nullptr; }
    HdlrBox* hdlr() const { return mdia_ != nullptr ? mdia_->hdlr() : nullptr; }
    StblBox* stbl() const;
    StsdBox* stsd() const;
    ElstBox* elst() const { return edts_ != nullptr ? edts_->elst() : nullptr; }
    HintBox* hint() const { return tref_ != nullptr ? tref_->hint() : nullptr; }

private:
    void takeHandler();

    std::uint32_t handler_ = 0;
    TkhdBox* tkhd_ = nullptr;  // all four are children
    TrefBox* tref_ = nullptr;
    MdiaBox* mdia_ = nullptr;
    EdtsBox* edts_ = nullptr;
};

}  // namespace qlix::kzm::impl
