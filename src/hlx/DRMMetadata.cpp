#include "hlx/DRMMetadata.h"

#include "hlx/Tables.h"

namespace hlx {

DRMMetadata::DRMMetadata(QlixHLXMetadata* metadata) : CSmartPtrBase(metadata) { metadataTable(); }

std::vector<std::uint8_t> DRMMetadata::bytes() const {
    auto* metadata = handleAs<QlixHLXMetadata>();
    std::uint32_t size = 0;
    checkResult(metadataTable().size(metadata, &size));
    std::vector<std::uint8_t> bytes(size);
    std::uint32_t copied = 0;
    checkResult(metadataTable().copy(metadata, bytes.data(), &copied));
    bytes.resize(copied);
    return bytes;
}

}  // namespace hlx
