#pragma once

#include "kzm/impl/FullBox.h"

namespace qlix::kzm::impl {

/// Header of a hint track's media. Written only: when reading, the code has no class.
///
///   offset  size  field                written
///        0    12  full box header      size 28, 'hmhd', version 0, flags 0
///       12     2  largest packet       0
///       14     2  average packet       0
///       16     4  largest bit rate     0
///       20     4  average bit rate     0
///       24     4  reserved             0
class HmhdBox final : public FullBox {
public:
    explicit HmhdBox(const BoxContext& context);

    void writeFields() override;
};

}  // namespace qlix::kzm::impl
