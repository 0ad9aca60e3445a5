#pragma once

#include "kzspkgutil/EncryptedKZSMediaWriterPolicy.h"

namespace torvo::kzspkgutil {

/// The policy of contexts of kind 0: `ahdr` has version 2.
class EGXS2EncryptedKZSMediaWriterPolicy final : public EncryptedKZSMediaWriterPolicy {
public:
    EGXS2EncryptedKZSMediaWriterPolicy(IPackagerContext& context, hlx::HLXEncryptor encryptor,
                                       const hlx::DRMMetadata& metadata);

    Blob makeProtectionBox(std::uint32_t clearFormat) const override;
};

}  // namespace torvo::kzspkgutil
