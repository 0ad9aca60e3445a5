#include "qlix_hlx/Credential.h"

#include <limits>

#include <openssl/provider.h>
#include <openssl/x509v3.h>

#include "qlix_hlx/Certificate.h"
#include "qlix_hlx/CredentialCost.h"

namespace qlix::hlx {
namespace {

OSSL_PROVIDER* legacyProvider = nullptr;

/// False when it can't be had. "try" keeps the default provider, which an ordinary load of another
/// one would switch off.
bool loadLegacyProvider() {
    if (legacyProvider == nullptr) legacyProvider = OSSL_PROVIDER_try_load(nullptr, "legacy", 1);
    return legacyProvider != nullptr;
}

Pkcs12Ptr parsePfx(ByteView bytes) {
    if (bytes.size > static_cast<std::size_t>(std::numeric_limits<long>::max())) {
        fail(HLX_ERROR_CREDENTIAL_UNREADABLE);
    }
    const std::uint8_t* at = bytes.data;
    Pkcs12Ptr pfx(d2i_PKCS12(nullptr, &at, static_cast<long>(bytes.size)));
    if (pfx == nullptr || at != bytes.data + bytes.size) fail(HLX_ERROR_CREDENTIAL_UNREADABLE);
    return pfx;
}

void checkPassword(PKCS12* pfx, const SecretBytes& password) {
    if (PKCS12_mac_present(pfx) != 1) return;
    const char* text = reinterpret_cast<const char*>(password.data());
    if (PKCS12_verify_mac(pfx, text, -1) == 1) return;
    // An empty password stands in old files for no password at all.
    if (text[0] == '\0' && PKCS12_verify_mac(pfx, nullptr, 0) == 1) return;
    fail(HLX_ERROR_CREDENTIAL_WRONG_PASSWORD);
}

/// The password with which PKCS12_parse decrypts the parts: null for an empty one, unless the MAC
/// of the file was made with an empty one.
const char* passwordOfParts(PKCS12* pfx, const SecretBytes& password) {
    const char* text = reinterpret_cast<const char*>(password.data());
    if (text[0] != '\0') return text;
    if (PKCS12_mac_present(pfx) != 1 || PKCS12_verify_mac(pfx, nullptr, 0) == 1) return nullptr;
    return text;
}

bool unpack(PKCS12* pfx, const SecretBytes& password, Credential& credential) {
    if (!checkCostInside(pfx, passwordOfParts(pfx, password))) return false;
    EVP_PKEY* key = nullptr;
    X509* certificate = nullptr;
    STACK_OF(X509)* chain = nullptr;
    const bool opened = PKCS12_parse(pfx, reinterpret_cast<const char*>(password.data()), &key,
                                     &certificate, &chain) == 1;
    credential = {KeyPtr(key), X509Ptr(certificate), X509StackPtr(chain)};
    return opened;
}

void checkSigns(const Credential& credential) {
    if (credential.key == nullptr) fail(HLX_ERROR_CREDENTIAL_WITHOUT_KEY);
    // PKCS12_parse gives out only a certificate whose public key is that of the private one.
    if (credential.certificate == nullptr) fail(HLX_ERROR_CREDENTIAL_MISMATCH);
    checkKeyStrength(credential.certificate.get());
    const std::uint32_t usage = X509_get_key_usage(credential.certificate.get());
    if ((usage & (KU_DIGITAL_SIGNATURE | KU_NON_REPUDIATION)) == 0) {
        refuseCertificate(HLX_CERT_KEY_USAGE);
    }
}

}  // namespace

Credential readCredential(ByteView pfx, std::string_view password) {
    const Pkcs12Ptr parsed = parsePfx(pfx);
    // OpenSSL wants it terminated.
    SecretBytes terminated(password.begin(), password.end());
    terminated.push_back(0);
    if (terminated.size() - 1 !=
        std::string_view(reinterpret_cast<const char*>(terminated.data())).size()) {
        fail(HLX_ERROR_CREDENTIAL_WRONG_PASSWORD);
    }
    checkCost(parsed.get());
    checkPassword(parsed.get(), terminated);

    Credential credential;
    if (!unpack(parsed.get(), terminated, credential)) {
        if (!loadLegacyProvider()) fail(HLX_ERROR_CREDENTIAL_UNREADABLE);
        if (!unpack(parsed.get(), terminated, credential)) fail(HLX_ERROR_CREDENTIAL_UNREADABLE);
    }
    checkSigns(credential);
    return credential;
}

void unloadLegacyProvider() {
    if (legacyProvider != nullptr) OSSL_PROVIDER_unload(legacyProvider);
    legacyProvider = nullptr;
}

}  // namespace qlix::hlx
