#pragma once

#include "kzm/impl/Box.h"

namespace qlix::kzm::impl {

/// Random access index at the end of a fragmented file. It is only written: in an input it is
/// opaque.
///
///   offset  size  field
///        0     8  box header: 'mfra'
///        8     .  'tfra' boxes
///        .    16  'mfro', added when the box is written
class MfraBox final : public Box {
public:
    explicit MfraBox(const BoxContext& context);

    RequiredChildren requiredChildren() const override { return requiredChildrenOf(type()); }
    void writeFields() override;
};

}  // namespace qlix::kzm::impl
