#pragma once

#include "kzm/impl/FullBox.h"

namespace qlix::kzm::impl {

/// A full box whose content fills a space that was set aside for it.
class VariableSizeBox : public FullBox {
public:
    using FullBox::FullBox;
};

}  // namespace qlix::kzm::impl
