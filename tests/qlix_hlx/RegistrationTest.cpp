#include <ctime>

#include <openssl/pkcs12.h>

#include "qlix_hlx/LibraryFixture.h"
#include "support/TestLicenseServer.h"

namespace qlix::hlx {
namespace {

using kz::test::Bytes;
using kz::test::CertificateSpec;
using kz::test::fill;
using kz::test::KeyKind;
using kz::test::makePfx;
using kz::test::PfxCipher;
using kz::test::PfxSpec;
using kz::test::testKey;
using kz::test::text;

std::uint32_t refused(std::uint32_t detail) { return detail * 65536 + 256; }

/// The PFX with a check of its password, "secret", that takes so many rounds.
Bytes withRounds(const Bytes& pfx, int rounds) {
    const unsigned char* at = pfx.data();
    PKCS12* const parsed = d2i_PKCS12(nullptr, &at, static_cast<long>(pfx.size()));
    EXPECT_EQ(PKCS12_set_mac(parsed, "secret", -1, nullptr, 0, rounds, EVP_sha256()), 1);
    unsigned char* der = nullptr;
    const int size = i2d_PKCS12(parsed, &der);
    const Bytes bytes(der, der + size);
    OPENSSL_free(der);
    PKCS12_free(parsed);
    return bytes;
}

class RegistrationTest : public LibraryTest {
protected:
    HLXResult certificateResult(const Bytes& der) const {
        QlixHLXCertificate* certificate = nullptr;
        const HLXResult result = readCertificate(der, &certificate);
        EXPECT_EQ(certificate == nullptr, result != HLX_OK);
        HLXRelease(certificate);
        return result;
    }
    HLXResult certificateResult(const CertificateSpec& spec) const {
        return certificateResult(kz::test::makeCertificate(spec));
    }
    HLXResult credentialResult(const Bytes& pfx, const std::string& password = "secret") const {
        QlixHLXCredential* credential = nullptr;
        const HLXResult result = readCredential(pfx, password, &credential);
        EXPECT_EQ(credential == nullptr, result != HLX_OK);
        HLXRelease(credential);
        return result;
    }
    HLXResult credentialResult(const CertificateSpec& spec, const PfxSpec& pfx) const {
        return credentialResult(
            makePfx(testKey(spec.key, spec.keyNumber), kz::test::makeCertificate(spec), pfx),
            pfx.password);
    }

    static CertificateSpec spec(KeyKind kind, const std::string& usage = "") {
        CertificateSpec result;
        result.key = kind;
        result.keyUsage = usage;
        return result;
    }
};

TEST_F(RegistrationTest, TakesStrongRsaAndP256) {
    EXPECT_EQ(certificateResult(spec(KeyKind::rsa2048)), HLX_OK);
    EXPECT_EQ(certificateResult(spec(KeyKind::p256)), HLX_OK);
    EXPECT_EQ(certificateResult(spec(KeyKind::rsa1024)), refused(HLX_CERT_WEAK_OR_UNKNOWN_KEY));
    EXPECT_EQ(certificateResult(spec(KeyKind::p384)), refused(HLX_CERT_WEAK_OR_UNKNOWN_KEY));
}

TEST_F(RegistrationTest, KeyUsageMustAllowReceivingKeys) {
    EXPECT_EQ(certificateResult(spec(KeyKind::rsa2048, "keyEncipherment")), HLX_OK);
    EXPECT_EQ(certificateResult(spec(KeyKind::rsa2048, "digitalSignature")),
              refused(HLX_CERT_KEY_USAGE));
    EXPECT_EQ(certificateResult(spec(KeyKind::p256, "keyAgreement")), HLX_OK);
    EXPECT_EQ(certificateResult(spec(KeyKind::p256, "keyEncipherment")),
              refused(HLX_CERT_KEY_USAGE));
}

TEST_F(RegistrationTest, BytesThatAreNoCertificateAreNotIdentified) {
    const Bytes der = kz::test::makeCertificate(spec(KeyKind::p256));
    EXPECT_EQ(certificateResult(Bytes()), refused(HLX_CERT_NOT_IDENTIFIED));
    EXPECT_EQ(certificateResult(text("-----BEGIN CERTIFICATE-----\n")),
              refused(HLX_CERT_NOT_IDENTIFIED));
    EXPECT_EQ(certificateResult(makePfx(testKey(KeyKind::p256), der)),
              refused(HLX_CERT_NOT_IDENTIFIED));
    for (std::size_t size = 1; size < der.size(); size += 7) {
        EXPECT_EQ(certificateResult(der.cutTo(size)), refused(HLX_CERT_NOT_IDENTIFIED)) << size;
    }
}

TEST_F(RegistrationTest, AChainIsRefused) {
    const Bytes chain =
        kz::test::makeCertificate(spec(KeyKind::p256)) + kz::test::authorityCertificate();
    EXPECT_EQ(certificateResult(chain), refused(HLX_CERT_TRAILING_BYTES));
}

TEST_F(RegistrationTest, DatesAreGivenOutAndDontMatterHere) {
    CertificateSpec expired = spec(KeyKind::p256);
    expired.validFromSeconds = -200;
    expired.validUntilSeconds = -100;
    QlixHLXCertificate* certificate = nullptr;
    ASSERT_EQ(readCertificate(kz::test::makeCertificate(expired), &certificate), HLX_OK);
    HLXCertificateDates dates{};
    ASSERT_EQ(encryptors->certificateDates(certificate, &dates), HLX_OK);
    const auto secondsOf = [](const HLXCalendarTime& time) {
        std::tm parts{};
        parts.tm_year = static_cast<int>(time.year) - 1900;
        parts.tm_mon = static_cast<int>(time.month) - 1;
        parts.tm_mday = static_cast<int>(time.day);
        parts.tm_hour = static_cast<int>(time.hour);
        parts.tm_min = static_cast<int>(time.minute);
        parts.tm_sec = static_cast<int>(time.second);
        return timegm(&parts);
    };
    EXPECT_EQ(secondsOf(dates.notAfter) - secondsOf(dates.notBefore), 100);
    EXPECT_NEAR(static_cast<double>(secondsOf(dates.notAfter)),
                static_cast<double>(std::time(nullptr) - 100), 60.0);
    HLXRelease(certificate);
}

TEST_F(RegistrationTest, OpensModernAndOldPfxFiles) {
    for (const PfxCipher cipher : {PfxCipher::aes256, PfxCipher::tripleDes, PfxCipher::rc2}) {
        PfxSpec pfx;
        pfx.cipher = cipher;
        EXPECT_EQ(credentialResult(spec(KeyKind::rsa2048), pfx), HLX_OK);
        EXPECT_EQ(credentialResult(spec(KeyKind::p256), pfx), HLX_OK);
    }
}

TEST_F(RegistrationTest, PasswordMayBeEmptyOrNotAscii) {
    PfxSpec pfx;
    pfx.password = "";
    EXPECT_EQ(credentialResult(spec(KeyKind::p256), pfx), HLX_OK);
    pfx.password = "gr\xc3\xbc\xc3\x9f";
    EXPECT_EQ(credentialResult(spec(KeyKind::p256), pfx), HLX_OK);
}

TEST_F(RegistrationTest, AWrongPasswordIsTold) {
    const Bytes pfx =
        makePfx(testKey(KeyKind::p256), kz::test::makeCertificate(spec(KeyKind::p256)));
    EXPECT_EQ(credentialResult(pfx, "Secret"), HLX_ERROR_CREDENTIAL_WRONG_PASSWORD);
    EXPECT_EQ(credentialResult(pfx, ""), HLX_ERROR_CREDENTIAL_WRONG_PASSWORD);
    EXPECT_EQ(credentialResult(pfx, std::string("secret\0x", 8)),
              HLX_ERROR_CREDENTIAL_WRONG_PASSWORD);
}

TEST_F(RegistrationTest, BrokenPfxFilesAreRefused) {
    const Bytes certificate = kz::test::makeCertificate(spec(KeyKind::p256));
    const Bytes pfx = makePfx(testKey(KeyKind::p256), certificate);
    EXPECT_EQ(credentialResult(Bytes()), HLX_ERROR_CREDENTIAL_UNREADABLE);
    EXPECT_EQ(credentialResult(certificate), HLX_ERROR_CREDENTIAL_UNREADABLE);
    EXPECT_EQ(credentialResult(pfx + fill(1, 0)), HLX_ERROR_CREDENTIAL_UNREADABLE);
    for (std::size_t size = 1; size < pfx.size(); size += 31) {
        EXPECT_NE(credentialResult(pfx.cutTo(size)), HLX_OK) << size;
    }
}

TEST_F(RegistrationTest, ACredentialNeedsItsKeyAndTheCertificateOfThatKey) {
    const Bytes certificate = kz::test::makeCertificate(spec(KeyKind::p256));
    PfxSpec withoutKey;
    withoutKey.withKey = false;
    EXPECT_EQ(credentialResult(makePfx(testKey(KeyKind::p256), certificate, withoutKey)),
              HLX_ERROR_CREDENTIAL_WITHOUT_KEY);
    PfxSpec withoutCertificate;
    withoutCertificate.withCertificate = false;
    EXPECT_EQ(credentialResult(makePfx(testKey(KeyKind::p256), certificate, withoutCertificate)),
              HLX_ERROR_CREDENTIAL_MISMATCH);
    EXPECT_EQ(credentialResult(makePfx(testKey(KeyKind::p256, 1), certificate)),
              HLX_ERROR_CREDENTIAL_MISMATCH);
}

TEST_F(RegistrationTest, ACredentialThatAsksForHoursOfWorkIsUnreadable) {
    const Bytes certificate = kz::test::makeCertificate(spec(KeyKind::p256));
    const Bytes pfx = makePfx(testKey(KeyKind::p256), certificate);
    EXPECT_EQ(credentialResult(withRounds(pfx, 100'000)), HLX_OK);
    EXPECT_EQ(credentialResult(withRounds(pfx, 1'000'001)), HLX_ERROR_CREDENTIAL_UNREADABLE);
}

// Each of these would hash for many minutes.
TEST_F(RegistrationTest, ACredentialWhosePartsAskForHoursOfWorkIsUnreadable) {
    constexpr long kLong = 0x7FFFFFFF;
    const auto resultFor = [&](void (*claim)(PfxSpec&)) {
        PfxSpec pfx;
        claim(pfx);
        return credentialResult(spec(KeyKind::p256), pfx);
    };
    EXPECT_EQ(resultFor([](PfxSpec& pfx) { pfx.claimedKeyRounds = kLong; }),
              HLX_ERROR_CREDENTIAL_UNREADABLE);
    EXPECT_EQ(resultFor([](PfxSpec& pfx) { pfx.claimedCertificateRounds = kLong; }),
              HLX_ERROR_CREDENTIAL_UNREADABLE);
    EXPECT_EQ(resultFor([](PfxSpec& pfx) {
                  pfx.claimedKeyRounds = kLong;
                  pfx.nestedKeys = 1;
              }),
              HLX_ERROR_CREDENTIAL_UNREADABLE);
    EXPECT_EQ(resultFor([](PfxSpec& pfx) { pfx.nestedKeys = 1; }), HLX_OK);
    // Not to be seen before the part around it is decrypted.
    EXPECT_EQ(resultFor([](PfxSpec& pfx) {
                  pfx.claimedKeyRounds = kLong;
                  pfx.keyInEncryptedPart = true;
              }),
              HLX_ERROR_CREDENTIAL_UNREADABLE);
    EXPECT_EQ(resultFor([](PfxSpec& pfx) { pfx.keyInEncryptedPart = true; }), HLX_OK);
}

TEST_F(RegistrationTest, ACredentialMustBeStrongAndAllowedToSign) {
    EXPECT_EQ(credentialResult(spec(KeyKind::rsa1024), {}), refused(HLX_CERT_WEAK_OR_UNKNOWN_KEY));
    EXPECT_EQ(credentialResult(spec(KeyKind::p256, "keyAgreement"), {}),
              refused(HLX_CERT_KEY_USAGE));
    EXPECT_EQ(credentialResult(spec(KeyKind::p256, "digitalSignature"), {}), HLX_OK);
}

TEST_F(RegistrationTest, ReservedAndNullArgumentsAreChecked) {
    const Bytes der = kz::test::makeCertificate(spec(KeyKind::p256));
    QlixHLXCertificate* certificate = nullptr;
    EXPECT_EQ(registration->certificateFromBytes(nullptr, nullptr, 5, &certificate),
              HLX_ERROR_BAD_ARGUMENT);
    EXPECT_EQ(registration->certificateFromBytes(nullptr, der.data(), sizeOf(der), nullptr),
              HLX_ERROR_BAD_ARGUMENT);
    EXPECT_EQ(encryptors->certificateDates(nullptr, nullptr), HLX_ERROR_BAD_ARGUMENT);
}

}  // namespace
}  // namespace qlix::hlx
