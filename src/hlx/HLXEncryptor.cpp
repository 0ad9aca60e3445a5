#include "hlx/HLXEncryptor.h"

#include "hlx/Sizes.h"
#include "hlx/Tables.h"

namespace hlx {
namespace {

/// On purpose: what the library is told of NAL units, whatever the sample.
/// Pinned by ProtectCliTest.HigherLevelsEncryptMore.
constexpr std::uint32_t kNalLengthSize = 4;

QlixHLXEncryptor* create(const SecretBytes& commonKey, const std::string& contentId,
                         const EncryptionFlags& flags) {
    QlixHLXEncryptor* encryptor = nullptr;
    checkResult(encryptorTable().create(&encryptor, commonKey.data(), sizeOf(commonKey),
                                        contentId.data(), sizeOf(contentId), flags.video,
                                        flags.audio, flags.data, flags.videoLevel,
                                        flags.msUnencrypted, 1, 0, nullptr));
    return encryptor;
}

HLXBlob blobOf(const Bytes& bytes) { return {bytes.data(), sizeOf(bytes)}; }

}  // namespace

bool operator==(const EncryptionFlags& left, const EncryptionFlags& right) {
    return left.video == right.video && left.audio == right.audio && left.data == right.data &&
           left.videoLevel == right.videoLevel && left.msUnencrypted == right.msUnencrypted;
}

HLXEncryptor::HLXEncryptor(const SecretBytes& commonKey, const std::string& contentId,
                           const EncryptionFlags& flags)
    : CSmartPtrBase(create(commonKey, contentId, flags)) {}

DRMMetadata HLXEncryptor::generateMetadata(const MetadataParties& parties,
                                           const Bytes& policy) const {
    return generate(parties, policy, nullptr);
}

DRMMetadata HLXEncryptor::generateMetadata(const MetadataParties& parties, const Bytes& policy,
                                           const Bytes& streamingRecord) const {
    const HLXBlob blob = blobOf(streamingRecord);
    const HLXBlobArray extras{&blob, 1};
    return generate(parties, policy, &extras);
}

DRMMetadata HLXEncryptor::generate(const MetadataParties& parties, const Bytes& policy,
                                   const HLXBlobArray* extras) const {
    const HLXBlob policyBlob = blobOf(policy);
    const HLXBlobArray policies{&policyBlob, 1};
    const std::uint32_t standalone = extras == nullptr ? 1 : 0;
    QlixHLXMetadata* metadata = nullptr;
    checkResult(encryptorTable().generateMetadata(
        handleAs<QlixHLXEncryptor>(), parties.serverUrl.data(), sizeOf(parties.serverUrl),
        parties.transportCertificate, parties.serverCertificate, parties.credential, &policies, 0,
        standalone, extras, nullptr, nullptr, &metadata));
    return DRMMetadata(metadata);
}

Bytes HLXEncryptor::prepareStreaming(const StreamingParts& parts) const {
    const HLXBlob policy = blobOf(*parts.policy);
    HLXBlob record{};
    checkResult(encryptorTable().prepareStreaming(
        handleAs<QlixHLXEncryptor>(), nullptr, &policy, nullptr, nullptr, nullptr,
        parts.serverUrl.c_str(), parts.secondCredential, 1, parts.extraCertificates,
        parts.extraCertificateCount, &parts.digests, &parts.texts, &record, nullptr));
    return Bytes(record.data, record.data + record.size);
}

EncryptionInfo HLXEncryptor::prepareSample(const std::uint8_t* data, std::uint32_t size,
                                           std::uint32_t trackClass, std::uint64_t timeMs,
                                           bool isAvc) const {
    EncryptionInfo info{};
    checkResult(encryptorTable().prepareSample(handleAs<QlixHLXEncryptor>(), data, size, trackClass,
                                               timeMs, nullptr, nullptr, &info, isAvc ? 1 : 0,
                                               kNalLengthSize));
    return info;
}

void HLXEncryptor::encrypt(const std::uint8_t* data, std::uint32_t size, const EncryptionInfo& info,
                           std::uint8_t* output, std::uint8_t* iv) const {
    std::uint32_t outputSize = info.encryptedSize;
    std::uint32_t ivSize = info.ivSize;
    checkResult(encryptorTable().encrypt(handleAs<QlixHLXEncryptor>(), data, size, output,
                                         &outputSize, nullptr, nullptr, nullptr, nullptr, iv,
                                         &ivSize));
    if (outputSize != info.encryptedSize || ivSize != info.ivSize) {
        throw HLXException(HLX_ERROR_INTERNAL);
    }
}

HLXCertificateDates HLXEncryptor::certificateDates(QlixHLXCertificate* certificate) {
    HLXCertificateDates dates{};
    checkResult(encryptorTable().certificateDates(certificate, &dates));
    return dates;
}

}  // namespace hlx
