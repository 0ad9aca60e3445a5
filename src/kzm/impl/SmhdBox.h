#pragma once

#include "kzm/impl/FullBox.h"

namespace qlix::kzm::impl {

/// Header of sound media. Nothing in it is looked at when reading.
///
///   offset  size  field              written
///        0    12  full box header    size 16, 'smhd', version 0, flags 0
///       12     2  balance            0
///       14     2  reserved           0
class SmhdBox final : public FullBox {
public:
    explicit SmhdBox(const BoxContext& context);
    SmhdBox(const BoxContext& context, const BoxHeader& header);

    void writeFields() override;
};

}  // namespace qlix::kzm::impl
