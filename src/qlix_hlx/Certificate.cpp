#include "qlix_hlx/Certificate.h"

#include <cstring>
#include <ctime>
#include <limits>

#include <openssl/x509v3.h>

namespace qlix::hlx {
namespace {

constexpr int kMinRsaBits = 2048;

bool isRsa(EVP_PKEY* key) { return EVP_PKEY_get_base_id(key) == EVP_PKEY_RSA; }

bool isP256(EVP_PKEY* key) {
    if (EVP_PKEY_get_base_id(key) != EVP_PKEY_EC) return false;
    char group[32] = {};
    std::size_t length = 0;
    if (EVP_PKEY_get_group_name(key, group, sizeof(group), &length) != 1) return false;
    return std::strcmp(group, SN_X9_62_prime256v1) == 0;
}

/// X509_get_key_usage answers all bits when the certificate doesn't restrict its key.
void checkReceivesKeys(X509* certificate) {
    const std::uint32_t wanted =
        isRsa(X509_get0_pubkey(certificate)) ? KU_KEY_ENCIPHERMENT : KU_KEY_AGREEMENT;
    if ((X509_get_key_usage(certificate) & wanted) == 0) refuseCertificate(HLX_CERT_KEY_USAGE);
}

HLXCalendarTime calendarTime(const ASN1_TIME* time) {
    std::tm parts{};
    require(ASN1_TIME_to_tm(time, &parts));
    return {static_cast<std::uint32_t>(parts.tm_year + 1900),
            static_cast<std::uint32_t>(parts.tm_mon + 1),
            static_cast<std::uint32_t>(parts.tm_mday),
            static_cast<std::uint32_t>(parts.tm_hour),
            static_cast<std::uint32_t>(parts.tm_min),
            static_cast<std::uint32_t>(parts.tm_sec)};
}

}  // namespace

X509Ptr readCertificate(ByteView bytes) {
    if (bytes.size > static_cast<std::size_t>(std::numeric_limits<long>::max())) {
        refuseCertificate(HLX_CERT_NOT_IDENTIFIED);
    }
    const std::uint8_t* at = bytes.data;
    X509Ptr certificate(d2i_X509(nullptr, &at, static_cast<long>(bytes.size)));
    if (certificate == nullptr) refuseCertificate(HLX_CERT_NOT_IDENTIFIED);
    if (at != bytes.data + bytes.size) refuseCertificate(HLX_CERT_TRAILING_BYTES);
    checkKeyStrength(certificate.get());
    checkReceivesKeys(certificate.get());
    return certificate;
}

void checkKeyStrength(X509* certificate) {
    EVP_PKEY* key = X509_get0_pubkey(certificate);
    const bool strong =
        key != nullptr && ((isRsa(key) && EVP_PKEY_get_bits(key) >= kMinRsaBits) || isP256(key));
    if (!strong) refuseCertificate(HLX_CERT_WEAK_OR_UNKNOWN_KEY);
}

void checkValidNow(const X509* certificate) {
    // X509_cmp_time answers 0 for a time that it can't read.
    if (X509_cmp_time(X509_get0_notBefore(certificate), nullptr) >= 0) {
        refuseCertificate(HLX_CERT_NOT_YET_VALID);
    }
    if (X509_cmp_time(X509_get0_notAfter(certificate), nullptr) <= 0) {
        refuseCertificate(HLX_CERT_EXPIRED);
    }
}

HLXCertificateDates datesOf(const X509* certificate) {
    return {calendarTime(X509_get0_notBefore(certificate)),
            calendarTime(X509_get0_notAfter(certificate))};
}

std::array<std::uint8_t, 32> fingerprintOf(const X509* certificate) {
    std::array<std::uint8_t, 32> digest{};
    unsigned size = 0;
    require(X509_digest(certificate, EVP_sha256(), digest.data(), &size));
    if (size != digest.size()) fail(HLX_ERROR_CRYPTO);
    return digest;
}

}  // namespace qlix::hlx
