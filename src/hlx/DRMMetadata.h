#pragma once

#include <cstdint>
#include <vector>

#include "hlx/CSmartPtrBase.h"

namespace hlx {

/// The protection metadata of a content, as the library made it.
class DRMMetadata final : public CSmartPtrBase {
public:
    DRMMetadata() = default;
    /// Takes over `metadata`, which may be null. Throws HLXException when the library has no
    /// metadata table that is new enough.
    explicit DRMMetadata(QlixHLXMetadata* metadata);

    /// All bytes. Throws HLXException.
    std::vector<std::uint8_t> bytes() const;
};

}  // namespace hlx
