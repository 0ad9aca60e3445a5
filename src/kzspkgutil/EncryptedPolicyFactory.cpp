#include "kzspkgutil/EncryptedPolicyFactory.h"

#include <string_view>
#include <vector>

#include "kzspkgutil/DRMMetadataGenerationFailed.h"
#include "kzspkgutil/EGXS2EncryptedKZSMediaWriterPolicy.h"
#include "kzspkgutil/QSTREncryptedKZSMediaWriterPolicy.h"

namespace torvo::kzspkgutil {
namespace {

constexpr std::uint32_t kEgxs2Kind = 0;
constexpr std::uint32_t kQstrKind = 1;
/// The object identifier of SHA-256.
constexpr std::string_view kSha256Oid = "2.16.840.1.101.3.4.2.1";

hlx::HLXEncryptor makeEncryptor(const kzs::IEncryptorContext& encryption) {
    return hlx::HLXEncryptor(encryption.commonKey(), encryption.contentId(),
                             encryption.encryptionFlags());
}

hlx::MetadataParties partiesOf(const kzs::IEncryptorContext& encryption) {
    return {encryption.licenseServerUrl(), encryption.transportCertificate(),
            encryption.licenseServerCertificate(), encryption.packagerCredential()};
}

/// The lists of a context in the form of the library; they point into the context.
class StreamingLists {
public:
    explicit StreamingLists(kzs::IEncryptorContext& encryption) {
        for (const auto& digest : encryption.digestList()) {
            blobs_.push_back({digest.data(), static_cast<std::uint32_t>(digest.size())});
        }
        for (const HLXBlob& blob : blobs_) {
            digests_.push_back({encryption.digestWord(), kSha256Oid.data(),
                                static_cast<std::uint32_t>(kSha256Oid.size()), &blob, nullptr});
        }
        for (const auto& texts : encryption.textList()) {
            const auto orNull = [](const std::string& text) {
                return text.empty() ? nullptr : text.c_str();
            };
            texts_.push_back(
                {{texts[0].c_str(), orNull(texts[1]), orNull(texts[2]), orNull(texts[3])}});
        }
    }
    StreamingLists(const StreamingLists&) = delete;
    StreamingLists& operator=(const StreamingLists&) = delete;

    HLXDigestList digests() const {
        return {digests_.data(), static_cast<std::uint32_t>(digests_.size())};
    }
    HLXTextList texts() const { return {texts_.data(), static_cast<std::uint32_t>(texts_.size())}; }

private:
    std::vector<HLXBlob> blobs_;
    std::vector<HLXDigestEntry> digests_;
    std::vector<HLXTextEntry> texts_;
};

std::shared_ptr<EncryptedKZSMediaWriterPolicy> makeEgxs2(IPackagerContext& context,
                                                         const kzs::IEncryptorContext& encryption) {
    const hlx::HLXEncryptor encryptor = makeEncryptor(encryption);
    const hlx::DRMMetadata metadata =
        encryptor.generateMetadata(partiesOf(encryption), encryption.policy());
    return std::make_shared<EGXS2EncryptedKZSMediaWriterPolicy>(context, encryptor,
                                                                requireMetadata(metadata));
}

std::shared_ptr<EncryptedKZSMediaWriterPolicy> makeQstr(IPackagerContext& context,
                                                        kzs::IEncryptorContext& encryption) {
    const hlx::HLXEncryptor encryptor = makeEncryptor(encryption);
    const StreamingLists lists(encryption);
    hlx::StreamingParts parts;
    parts.policy = &encryption.policy();
    parts.serverUrl = encryption.licenseServerUrl();
    parts.secondCredential = encryption.secondCredential();
    parts.extraCertificates = encryption.extraCertificates();
    parts.extraCertificateCount = static_cast<std::uint32_t>(encryption.extraCertificateCount());
    parts.digests = lists.digests();
    parts.texts = lists.texts();
    const hlx::Bytes record = encryptor.prepareStreaming(parts);
    const hlx::DRMMetadata metadata =
        encryptor.generateMetadata(partiesOf(encryption), encryption.policy(), record);
    return std::make_shared<QSTREncryptedKZSMediaWriterPolicy>(context, encryptor,
                                                               requireMetadata(metadata), record);
}

}  // namespace

std::shared_ptr<EncryptedKZSMediaWriterPolicy> makeEncryptedPolicy(
    IPackagerContext& context, kzs::IEncryptorContext& encryption) {
    switch (encryption.kind()) {
        case kEgxs2Kind:
            return makeEgxs2(context, encryption);
        case kQstrKind:
            return makeQstr(context, encryption);
        default:
            return nullptr;
    }
}

const hlx::DRMMetadata& requireMetadata(const hlx::DRMMetadata& metadata) {
    if (metadata.isNull()) throw DRMMetadataGenerationFailed();
    return metadata;
}

}  // namespace torvo::kzspkgutil
