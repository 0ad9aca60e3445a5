#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "hlx/CSmartPtrBase.h"
#include "hlx/DRMMetadata.h"
#include "hlx/Secret.h"

namespace hlx {

using Bytes = std::vector<std::uint8_t>;
using EncryptionInfo = HLXEncryptionInfo;

/// The words that the library decides by, in its order.
struct EncryptionFlags {
    std::uint32_t video = 0;  ///< 1: encrypted, as in the two below
    std::uint32_t audio = 0;
    std::uint32_t data = 0;
    std::uint32_t videoLevel = 0;     ///< 0 low to 2 high
    std::uint32_t msUnencrypted = 0;  ///< milliseconds at the start that stay in the clear
};

bool operator==(const EncryptionFlags& left, const EncryptionFlags& right);

/// Who the metadata is for, from whom, and where its license is to be had. The handles stay the
/// caller's.
struct MetadataParties {
    std::string serverUrl;
    QlixHLXCertificate* transportCertificate = nullptr;
    QlixHLXCertificate* serverCertificate = nullptr;
    QlixHLXCredential* credential = nullptr;
};

/// What the record of a streaming presentation is made of. The lists and handles stay the caller's.
struct StreamingParts {
    const Bytes* policy = nullptr;
    std::string serverUrl;
    QlixHLXCredential* secondCredential = nullptr;  ///< null: the record isn't signed
    QlixHLXCertificate* const* extraCertificates = nullptr;
    std::uint32_t extraCertificateCount = 0;
    HLXDigestList digests{};
    HLXTextList texts{};
};

/// Encrypts the samples of one content. All operations throw HLXException.
class HLXEncryptor final : public CSmartPtrBase {
public:
    HLXEncryptor() = default;
    HLXEncryptor(const SecretBytes& commonKey, const std::string& contentId,
                 const EncryptionFlags& flags);

    /// Metadata that stands alone.
    DRMMetadata generateMetadata(const MetadataParties& parties, const Bytes& policy) const;
    /// Metadata that carries a streaming record.
    DRMMetadata generateMetadata(const MetadataParties& parties, const Bytes& policy,
                                 const Bytes& streamingRecord) const;
    Bytes prepareStreaming(const StreamingParts& parts) const;

    /// Decides about a sample. `trackClass` is 1 video, 2 audio, 4 data, 0 none of them.
    EncryptionInfo prepareSample(const std::uint8_t* data, std::uint32_t size,
                                 std::uint32_t trackClass, std::uint64_t timeMs, bool isAvc) const;
    /// Encrypts the sample that was prepared last. `output` has room for info.encryptedSize bytes,
    /// `iv` for info.ivSize.
    void encrypt(const std::uint8_t* data, std::uint32_t size, const EncryptionInfo& info,
                 std::uint8_t* output, std::uint8_t* iv) const;

    /// When a certificate is valid.
    static HLXCertificateDates certificateDates(QlixHLXCertificate* certificate);

private:
    DRMMetadata generate(const MetadataParties& parties, const Bytes& policy,
                         const HLXBlobArray* extras) const;
};

}  // namespace hlx
