#pragma once

#include <string>

#include "kzspkgutil/EncryptedKZSMediaWriterPolicy.h"

namespace torvo::kzspkgutil {

/// The policy of contexts of kind 1: `ahdr` has version 3.
///
/// On purpose: it keeps the streaming record as a second text, and this version of the box doesn't
/// write it. Pinned by EncryptedPolicyFactoryTest.KindOneCarriesAStreamingRecord and
/// ProtectionBoxTest.OnlyTheHeaderVersionTellsTheTwoKindsApart.
class QSTREncryptedKZSMediaWriterPolicy final : public EncryptedKZSMediaWriterPolicy {
public:
    QSTREncryptedKZSMediaWriterPolicy(IPackagerContext& context, hlx::HLXEncryptor encryptor,
                                      const hlx::DRMMetadata& metadata,
                                      const Blob& streamingRecord);

    Blob makeProtectionBox(std::uint32_t clearFormat) const override;

    /// The streaming record as base64 text.
    const std::string& secondText() const { return secondText_; }

private:
    std::string secondText_;
};

}  // namespace torvo::kzspkgutil
