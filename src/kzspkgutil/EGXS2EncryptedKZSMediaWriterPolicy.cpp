#include "kzspkgutil/EGXS2EncryptedKZSMediaWriterPolicy.h"

#include <utility>

#include "kzspkgutil/ProtectionBox.h"

namespace torvo::kzspkgutil {

EGXS2EncryptedKZSMediaWriterPolicy::EGXS2EncryptedKZSMediaWriterPolicy(
    IPackagerContext& context, hlx::HLXEncryptor encryptor, const hlx::DRMMetadata& metadata)
    : EncryptedKZSMediaWriterPolicy(context, std::move(encryptor), metadata) {}

Blob EGXS2EncryptedKZSMediaWriterPolicy::makeProtectionBox(std::uint32_t clearFormat) const {
    ProtectionBoxContent content;
    content.clearFormat = clearFormat;
    content.ahdrVersion = 2;
    content.metadataText = metadataText();
    return kzspkgutil::makeProtectionBox(content);
}

}  // namespace torvo::kzspkgutil
