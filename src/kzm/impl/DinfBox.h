#pragma once

#include "kzm/impl/DrefBox.h"

namespace qlix::kzm::impl {

/// Data information: a container of `dref`.
class DinfBox final : public Box {
public:
    /// Makes the `dref` too.
    explicit DinfBox(const BoxContext& context);
    DinfBox(const BoxContext& context, const BoxHeader& header);

    void addChild(BoxPtr child) override;
    RequiredChildren requiredChildren() const override { return requiredChildrenOf(type()); }

    /// Null when there is none.
    DrefBox* dref() const { return dref_; }

private:
    DrefBox* dref_ = nullptr;  // one of the children
};

}  // namespace qlix::kzm::impl
