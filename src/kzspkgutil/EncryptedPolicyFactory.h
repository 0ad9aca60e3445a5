#pragma once

#include <memory>

#include "kzs/IEncryptorContext.h"
#include "kzspkgutil/EncryptedKZSMediaWriterPolicy.h"

namespace torvo::kzspkgutil {

/// The policy for the kind of `encryption`: 0 EGXS2, 1 QSTR, null for any other.
///
/// Makes the encryptor and the protection metadata. `context` outlives the policy. Throws
/// hlx::HLXException, and DRMMetadataGenerationFailed when the library makes no metadata.
std::shared_ptr<EncryptedKZSMediaWriterPolicy> makeEncryptedPolicy(
    IPackagerContext& context, kzs::IEncryptorContext& encryption);

/// Answers `metadata`, or throws DRMMetadataGenerationFailed when it is null.
const hlx::DRMMetadata& requireMetadata(const hlx::DRMMetadata& metadata);

}  // namespace torvo::kzspkgutil
