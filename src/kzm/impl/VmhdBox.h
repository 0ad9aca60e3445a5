#pragma once

#include "kzm/impl/FullBox.h"

namespace qlix::kzm::impl {

/// Header of video media.
///
///   offset  size  field                       written
///        0    12  full box header             size 20, 'vmhd', version 0, flags 1
///       12     2  graphics mode               0
///       14     6  red, green, blue: 2 each    0
class VmhdBox final : public FullBox {
public:
    explicit VmhdBox(const BoxContext& context);
    VmhdBox(const BoxContext& context, const BoxHeader& header);

    void writeFields() override;
    void readFields() override;

    std::uint16_t graphicsMode() const { return graphicsMode_; }
    std::uint16_t color(std::size_t index) const { return colors_[index]; }

private:
    std::uint16_t graphicsMode_ = 0;
    std::uint16_t colors_[3] = {0, 0, 0};
};

}  // namespace qlix::kzm::impl
