#pragma once

#include "kzm/impl/FullBox.h"

namespace qlix::kzm::impl {

/// Header of media of any other kind: a full box header of 12 bytes and no field.
class NmhdBox final : public FullBox {
public:
    explicit NmhdBox(const BoxContext& context) : FullBox(context, fourCc("nmhd"), 0, 0) {}
    NmhdBox(const BoxContext& context, const BoxHeader& header) : FullBox(context, header) {}
};

}  // namespace qlix::kzm::impl
