#include <string>

#include "fuzz/FuzzTarget.h"
#include "qlix_hlx/qlix_hlx.h"

namespace {

using kz::fuzz::require;

/// The library with its tables, started once.
class Library {
public:
    Library() {
        const HLXInitRecord record = {};
        require(HLXInitialize(&record) == HLX_OK, "the library starts");
        HLX_GetEncryptorInterface(&encryptors);
        HLX_GetMetadataInterface(&metadatas);
        HLX_GetRegistrationInterface(&registration);
    }

    const HLXEncryptorTable* encryptors = nullptr;
    const HLXMetadataTable* metadatas = nullptr;
    const HLXRegistrationTable* registration = nullptr;
};

QlixHLXEncryptor* makeEncryptor(const Library& library) {
    const std::uint8_t key[16] = {1, 2, 3};
    QlixHLXEncryptor* encryptor = nullptr;
    library.encryptors->create(&encryptor, key, sizeof(key), "movie", 5, 1, 1, 1, 2, 0, 1, 0,
                               nullptr);
    return encryptor;
}

/// Dates, and metadata for the certificate's owner, made without a signature's credential.
void useCertificate(const Library& library, QlixHLXCertificate* certificate,
                    QlixHLXCredential* credential) {
    HLXCertificateDates dates;
    library.encryptors->certificateDates(certificate, &dates);
    QlixHLXEncryptor* encryptor = makeEncryptor(library);
    const std::uint8_t text[] = {'p'};
    const HLXBlob policy = {text, 1};
    const HLXBlobArray policies = {&policy, 1};
    QlixHLXMetadata* metadata = nullptr;
    library.encryptors->generateMetadata(encryptor, "http://l", 8, certificate, certificate,
                                         credential, &policies, 0, 1, nullptr, nullptr, nullptr,
                                         &metadata);
    std::uint32_t size = 0;
    if (metadata != nullptr) {
        require(library.metadatas->size(metadata, &size) == HLX_OK && size > 0,
                "metadata that was made has bytes");
    }
    HLXRelease(metadata);
    HLXRelease(encryptor);
}

}  // namespace

/// The first byte chooses: a certificate, or a PFX whose password is "secret" or none.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const Library library;
    if (size == 0) return 0;
    const auto rest = static_cast<std::uint32_t>(size - 1);
    QlixHLXCertificate* certificate = nullptr;
    QlixHLXCredential* credential = nullptr;
    HLXResult result = HLX_OK;
    if (data[0] == 0) {
        result = library.registration->certificateFromBytes(nullptr, data + 1, rest, &certificate);
        require((result == HLX_OK) == (certificate != nullptr), "0 comes with a certificate");
        if (certificate != nullptr) useCertificate(library, certificate, nullptr);
    } else {
        const std::string password = data[0] == 1 ? "secret" : "";
        result = library.registration->credentialFromBytes(
            nullptr, data + 1, rest, password.data(), static_cast<std::uint32_t>(password.size()),
            &credential);
        require((result == HLX_OK) == (credential != nullptr), "0 comes with a credential");
    }
    HLXRelease(certificate);
    HLXRelease(credential);
    return 0;
}
