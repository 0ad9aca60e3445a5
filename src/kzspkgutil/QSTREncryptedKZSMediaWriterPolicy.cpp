#include "kzspkgutil/QSTREncryptedKZSMediaWriterPolicy.h"

#include <utility>

#include "kzs/Base64.h"
#include "kzspkgutil/ProtectionBox.h"

namespace torvo::kzspkgutil {

QSTREncryptedKZSMediaWriterPolicy::QSTREncryptedKZSMediaWriterPolicy(
    IPackagerContext& context, hlx::HLXEncryptor encryptor, const hlx::DRMMetadata& metadata,
    const Blob& streamingRecord)
    : EncryptedKZSMediaWriterPolicy(context, std::move(encryptor), metadata),
      secondText_(kzs::base64Encode(streamingRecord)) {}

Blob QSTREncryptedKZSMediaWriterPolicy::makeProtectionBox(std::uint32_t clearFormat) const {
    ProtectionBoxContent content;
    content.clearFormat = clearFormat;
    content.ahdrVersion = 3;
    content.metadataText = metadataText();
    content.secondText = secondText_;
    return kzspkgutil::makeProtectionBox(content);
}

}  // namespace torvo::kzspkgutil
