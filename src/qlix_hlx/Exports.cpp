#include <cstring>
#include <new>

#include <openssl/err.h>

#include "qlix_hlx/Certificate.h"
#include "qlix_hlx/Envelope.h"
#include "qlix_hlx/Handles.h"
#include "qlix_hlx/Library.h"
#include "qlix_hlx/ProtectionRecord.h"
#include "qlix_hlx/Random.h"
#include "qlix_hlx/qlix_hlx.h"

namespace qlix::hlx {
namespace {

constexpr std::uint32_t kMaxLevel = 2;
// The names are given out as an array, of which the last entry counts.
const char* const kFilterNames[] = {"SE"};
constexpr std::uint32_t kFilterCount = 1;

/// Runs the body of an entry point; nothing that it throws goes further than this.
template <typename Body>
HLXResult guarded(Body body) noexcept {
    HLXResult result = HLX_OK;
    try {
        body();
    } catch (const Failure& failure) {
        result = failure.result;
    } catch (const std::bad_alloc&) {
        result = HLX_ERROR_OUT_OF_MEMORY;
    } catch (...) {
        result = HLX_ERROR_INTERNAL;
    }
    if (result != HLX_OK) ERR_clear_error();
    return result;
}

void requireArguments(bool areRight) {
    if (!areRight) fail(HLX_ERROR_BAD_ARGUMENT);
}

ByteView viewOfBlob(const HLXBlob& blob) {
    requireArguments(blob.data != nullptr || blob.size == 0);
    return {blob.data, blob.size};
}

std::vector<ByteView> viewsOf(const HLXBlobArray* array) {
    std::vector<ByteView> views;
    if (array == nullptr) return views;
    requireArguments(array->blobs != nullptr || array->count == 0);
    for (std::uint32_t i = 0; i < array->count; ++i) views.push_back(viewOfBlob(array->blobs[i]));
    return views;
}

QlixHLXEncryptor& encryptorOf(void* handle) {
    requireStarted();
    auto& encryptor = Object::from<QlixHLXEncryptor>(handle);
    // Wiped by an earlier stop.
    if (encryptor.cipher == nullptr) fail(HLX_ERROR_BAD_HANDLE);
    return encryptor;
}

const Credential& credentialOf(void* handle) {
    const Credential& credential = Object::from<QlixHLXCredential>(handle).credential;
    if (credential.key == nullptr) fail(HLX_ERROR_BAD_HANDLE);
    return credential;
}

HLXResult create(QlixHLXEncryptor** out, const std::uint8_t* key, std::uint32_t keySize,
                 const char* contentId, std::uint32_t contentIdSize, std::uint32_t encryptVideo,
                 std::uint32_t encryptAudio, std::uint32_t encryptData, std::uint32_t videoLevel,
                 std::uint32_t msUnencrypted, std::uint32_t one, std::uint32_t zero,
                 const void* null) {
    return guarded([&] {
        requireStarted();
        requireArguments(out != nullptr && (key != nullptr || keySize == 0) &&
                         (contentId != nullptr || contentIdSize == 0) && one == 1 && zero == 0 &&
                         null == nullptr);
        if (videoLevel > kMaxLevel) fail(HLX_ERROR_BAD_VIDEO_LEVEL);
        auto encryptor = std::make_unique<QlixHLXEncryptor>();
        encryptor->contentId.assign(contentId == nullptr ? "" : contentId, contentIdSize);
        encryptor->flags = {encryptVideo, encryptAudio, encryptData, videoLevel, msUnencrypted};
        encryptor->keys = std::make_unique<ContentKeys>();
        deriveContentKeys({key, keySize}, encryptor->contentId, *encryptor->keys);
        std::array<std::uint8_t, kNonceSize> nonce{};
        fillRandom(nonce.data(), nonce.size());
        encryptor->cipher = std::make_unique<SampleCipher>(*encryptor->keys, nonce);
        *out = encryptor.release();
    });
}

HLXResult generateMetadata(QlixHLXEncryptor* handle, const char* serverUrl,
                           std::uint32_t serverUrlSize, QlixHLXCertificate* transportCertificate,
                           QlixHLXCertificate* serverCertificate, QlixHLXCredential* credential,
                           const HLXBlobArray* policies, std::uint32_t zero,
                           std::uint32_t standalone, const HLXBlobArray* extras, const void* null1,
                           const void* null2, QlixHLXMetadata** out) {
    return guarded([&] {
        const QlixHLXEncryptor& encryptor = encryptorOf(handle);
        requireArguments(out != nullptr && (serverUrl != nullptr || serverUrlSize == 0) &&
                         policies != nullptr && zero == 0 && null1 == nullptr && null2 == nullptr);
        requireArguments(standalone == 1 ? extras == nullptr
                                         : standalone == 0 && extras != nullptr);
        const auto& transport = Object::from<QlixHLXCertificate>(transportCertificate);
        const auto& server = Object::from<QlixHLXCertificate>(serverCertificate);
        const Credential& signer = credentialOf(credential);
        // An expired transport certificate is the caller's to warn about; it seals nothing here.
        checkValidNow(server.certificate.get());
        checkValidNow(signer.certificate.get());

        const auto fingerprint = fingerprintOf(transport.certificate.get());
        ProtectionRecord record;
        record.contentId = encryptor.contentId;
        record.keyId = {encryptor.keys->keyId.data(), kKeySize};
        if (serverUrlSize > 0) record.serverUrl = {serverUrl, serverUrlSize};
        record.transportFingerprint = {fingerprint.data(), fingerprint.size()};
        record.policies = viewsOf(policies);
        record.flags = encryptor.flags;
        record.contentKey = {encryptor.keys->contentKey.data(), kKeySize};
        record.extras = viewsOf(extras);
        checkRecord(record);

        auto metadata = std::make_unique<QlixHLXMetadata>();
        metadata->bytes =
            sealFor(server.certificate.get(), signRecord(encodeRecord(record), signer));
        *out = metadata.release();
    });
}

HLXResult encrypt(QlixHLXEncryptor* handle, const std::uint8_t* data, std::uint32_t size,
                  std::uint8_t* output, std::uint32_t* outputSize, const void* null1,
                  const void* null2, const void* null3, const void* null4, std::uint8_t* iv,
                  std::uint32_t* ivSize) {
    return guarded([&] {
        QlixHLXEncryptor& encryptor = encryptorOf(handle);
        requireArguments((data != nullptr || size == 0) && output != nullptr &&
                         outputSize != nullptr && iv != nullptr && ivSize != nullptr &&
                         null1 == nullptr && null2 == nullptr && null3 == nullptr &&
                         null4 == nullptr);
        if (!encryptor.isAnnounced || encryptor.announcedSize != size) {
            fail(HLX_ERROR_SAMPLE_NOT_PREPARED);
        }
        const std::uint32_t needed = SampleCipher::encryptedSize(size);
        if (*outputSize < needed || *ivSize < kIvSize) fail(HLX_ERROR_OUTPUT_TOO_SMALL);
        encryptor.isAnnounced = false;
        encryptor.cipher->encrypt(data, size, output, iv);
        *outputSize = needed;
        *ivSize = kIvSize;
    });
}

HLXResult prepareSample(QlixHLXEncryptor* handle, const std::uint8_t* data, std::uint32_t size,
                        std::uint32_t trackClass, std::uint64_t timeMs, const void* null1,
                        const void* null2, HLXEncryptionInfo* info, std::uint32_t /*isAvc*/,
                        std::uint32_t nalLengthSize) {
    return guarded([&] {
        QlixHLXEncryptor& encryptor = encryptorOf(handle);
        requireArguments((data != nullptr || size == 0) && info != nullptr && null1 == nullptr &&
                         null2 == nullptr);
        encryptor.isAnnounced = false;
        if (size > SampleCipher::kMaxSampleSize) fail(HLX_ERROR_SAMPLE_TOO_LARGE);
        const bool encrypted =
            mustEncrypt(encryptor.flags, trackClass, timeMs, {data, size}, nalLengthSize);
        encryptor.isAnnounced = encrypted;
        encryptor.announcedSize = size;
        *info = {};
        info->filterNames = kFilterNames;
        info->filterCount = kFilterCount;
        info->encrypted = encrypted ? 1 : 0;
        info->encryptedSize = encrypted ? SampleCipher::encryptedSize(size) : size;
        info->ivSize = kIvSize;
    });
}

HLXResult prepareStreaming(QlixHLXEncryptor* handle, const void* null1, const HLXBlob* policy,
                           const void* null2, const void* null3, const void* null4,
                           const char* serverUrl, QlixHLXCredential* secondCredential,
                           std::uint32_t one, QlixHLXCertificate* const* extraCertificates,
                           std::uint32_t extraCertificateCount, const HLXDigestList* digests,
                           const HLXTextList* texts, HLXBlob* blob, const void* null5) {
    return guarded([&] {
        QlixHLXEncryptor& encryptor = encryptorOf(handle);
        requireArguments(null1 == nullptr && policy != nullptr && null2 == nullptr &&
                         null3 == nullptr && null4 == nullptr && serverUrl != nullptr && one == 1 &&
                         blob != nullptr && null5 == nullptr &&
                         (extraCertificates != nullptr || extraCertificateCount == 0));
        std::vector<std::array<std::uint8_t, 32>> fingerprints;
        for (std::uint32_t i = 0; i < extraCertificateCount; ++i) {
            const auto& extra = Object::from<QlixHLXCertificate>(extraCertificates[i]);
            fingerprints.push_back(fingerprintOf(extra.certificate.get()));
        }
        StreamingRecord record;
        record.policy = viewOfBlob(*policy);
        record.serverUrl = serverUrl;
        for (const auto& fingerprint : fingerprints) {
            record.certificateFingerprints.push_back({fingerprint.data(), fingerprint.size()});
        }
        record.digests = digests;
        record.texts = texts;
        SecretBytes bytes = encodeStreamingRecord(record);
        if (secondCredential != nullptr) bytes = signRecord(bytes, credentialOf(secondCredential));
        encryptor.streamingRecord = std::move(bytes);
        *blob = {encryptor.streamingRecord.data(),
                 static_cast<std::uint32_t>(encryptor.streamingRecord.size())};
    });
}

HLXResult certificateDates(QlixHLXCertificate* certificate, HLXCertificateDates* dates) {
    return guarded([&] {
        requireStarted();
        requireArguments(dates != nullptr);
        *dates = datesOf(Object::from<QlixHLXCertificate>(certificate).certificate.get());
    });
}

HLXResult metadataSize(QlixHLXMetadata* metadata, std::uint32_t* size) {
    return guarded([&] {
        requireStarted();
        requireArguments(size != nullptr);
        *size = static_cast<std::uint32_t>(Object::from<QlixHLXMetadata>(metadata).bytes.size());
    });
}

HLXResult metadataCopy(QlixHLXMetadata* metadata, std::uint8_t* buffer, std::uint32_t* copied) {
    return guarded([&] {
        requireStarted();
        requireArguments(buffer != nullptr && copied != nullptr);
        const SecretBytes& bytes = Object::from<QlixHLXMetadata>(metadata).bytes;
        std::memcpy(buffer, bytes.data(), bytes.size());
        *copied = static_cast<std::uint32_t>(bytes.size());
    });
}

HLXResult certificateFromBytes(QlixHLXRegistration* registration, const std::uint8_t* bytes,
                               std::uint32_t size, QlixHLXCertificate** out) {
    return guarded([&] {
        requireStarted();
        requireArguments(registration == nullptr && (bytes != nullptr || size == 0) &&
                         out != nullptr);
        auto certificate = std::make_unique<QlixHLXCertificate>();
        certificate->certificate = readCertificate({bytes, size});
        *out = certificate.release();
    });
}

HLXResult credentialFromBytes(QlixHLXRegistration* registration, const std::uint8_t* bytes,
                              std::uint32_t size, const char* password, std::uint32_t passwordSize,
                              QlixHLXCredential** out) {
    return guarded([&] {
        requireStarted();
        requireArguments(registration == nullptr && (bytes != nullptr || size == 0) &&
                         (password != nullptr || passwordSize == 0) && out != nullptr);
        auto credential = std::make_unique<QlixHLXCredential>();
        const std::string_view secret(password == nullptr ? "" : password, passwordSize);
        credential->credential = readCredential({bytes, size}, secret);
        *out = credential.release();
    });
}

constexpr HLXEncryptorTable kEncryptorTable = {
    11, create, generateMetadata, encrypt, prepareSample, prepareStreaming, {}, certificateDates,
};
constexpr HLXMetadataTable kMetadataTable = {5, {}, metadataSize, metadataCopy};
constexpr HLXRegistrationTable kRegistrationTable = {6, nullptr, certificateFromBytes, nullptr,
                                                     credentialFromBytes};

template <typename Table>
HLXResult give(const Table& table, const Table** out) {
    if (out == nullptr) return HLX_ERROR_BAD_ARGUMENT;
    *out = &table;
    return HLX_OK;
}

}  // namespace
}  // namespace qlix::hlx

HLXResult HLXInitialize(const HLXInitRecord* record) {
    return qlix::hlx::guarded([&] {
        qlix::hlx::requireArguments(record != nullptr);
        for (const std::uint32_t word : record->reserved) qlix::hlx::requireArguments(word == 0);
        qlix::hlx::start();
    });
}

HLXResult HLXTerminate() {
    return qlix::hlx::guarded([] { qlix::hlx::stop(); });
}

HLXResult HLXRelease(void* handle) {
    return qlix::hlx::guarded([&] {
        if (handle == nullptr) return;
        qlix::hlx::Object* object = qlix::hlx::Object::find(handle);
        if (object == nullptr) qlix::hlx::fail(HLX_ERROR_BAD_HANDLE);
        delete object;
    });
}

HLXResult HLX_GetEncryptorInterface(const HLXEncryptorTable** table) {
    return qlix::hlx::give(qlix::hlx::kEncryptorTable, table);
}

HLXResult HLX_GetMetadataInterface(const HLXMetadataTable** table) {
    return qlix::hlx::give(qlix::hlx::kMetadataTable, table);
}

HLXResult HLX_GetRegistrationInterface(const HLXRegistrationTable** table) {
    return qlix::hlx::give(qlix::hlx::kRegistrationTable, table);
}
