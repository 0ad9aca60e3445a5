#pragma once

#include "kzm/impl/FullBox.h"

namespace qlix::kzm::impl {

/// Data references: the files that sample entries refer to.
///
///   offset  size  field              written
///        0    12  full box header    'dref', version 0, flags 0
///       12     4  entry count        1
///       16     .  entries            one 'url ' for the same file
class DrefBox final : public FullBox {
public:
    /// Makes the `url ` too.
    explicit DrefBox(const BoxContext& context);
    /// Throws unsupportedVersion above version 1.
    DrefBox(const BoxContext& context, const BoxHeader& header);

    void writeFields() override;
};

}  // namespace qlix::kzm::impl
