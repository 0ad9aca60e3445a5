#pragma once

#include "kzm/impl/FullBox.h"

namespace qlix::kzm::impl {

/// Header of media other than sound, video and hints. It has no fields.
///
///   offset  size  field
///        0    12  full box header: size 12, 'nmhd', version 0, flags 0
class NmhdBox final : public FullBox {
public:
    explicit NmhdBox(const BoxContext& context) : FullBox(context, fourCc("nmhd"), 0, 0) {}
    NmhdBox(const BoxContext& context, const BoxHeader& header) : FullBox(context, header) {}
};

}  // namespace qlix::kzm::impl
