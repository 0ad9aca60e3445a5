#include <gtest/gtest.h>
#include <openssl/evp.h>
#include <openssl/pkcs12.h>

#include "qlix_hlx/CredentialCost.h"
#include "qlix_hlx/Failure.h"
#include "qlix_hlx/OpenSslPtr.h"
#include "qlix_hlx/qlix_hlx.h"
#include "support/TestPki.h"

namespace qlix::hlx {
namespace {

using kz::test::Bytes;
using kz::test::der;
using kz::test::hex;
using kz::test::KeyKind;
using kz::test::PfxSpec;

/// What a file made by OpenSSL asks for to check its password, or to open its certificate.
constexpr long kUsualRounds = 2048;

Pkcs12Ptr pfxOf(const PfxSpec& spec) {
    kz::test::CertificateSpec certificate;
    certificate.key = KeyKind::p256;
    const Bytes pfx = kz::test::makePfx(kz::test::testKey(KeyKind::p256),
                                        kz::test::makeCertificate(certificate), spec);
    const unsigned char* at = pfx.data();
    return Pkcs12Ptr(d2i_PKCS12(nullptr, &at, static_cast<long>(pfx.size())));
}

/// Nothing is hashed for this, whatever the file asks for.
bool isRefused(const PKCS12* pfx) {
    try {
        checkCost(pfx);
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.result, HLX_ERROR_CREDENTIAL_UNREADABLE);
        return true;
    }
    return false;
}

bool isRefused(const PfxSpec& spec) { return isRefused(pfxOf(spec).get()); }

bool isRoundsRefused(long rounds) {
    PfxSpec spec;
    spec.claimedKeyRounds = rounds;
    return isRefused(spec);
}

/// Of a way to make a key of a password, in DER: the key is encrypted with AES under it.
bool isDerivationRefused(const Bytes& derivation, unsigned keys = 1) {
    const Bytes aes = der(0x30, hex("0609 60864801650304012a"), der(0x04, kz::test::fill(16, 0)));
    PfxSpec spec;
    spec.nestedKeys = keys;
    spec.claimedKeyAlgorithm =
        der(0x30, hex("0609 2a864886f70d01050d"), der(0x30, derivation, aes));
    return isRefused(spec);
}

/// The three factors of the work are integers in DER without tag and size.
bool isScryptRefused(const char* cost, const char* blockSize, const char* lanes,
                     unsigned keys = 1) {
    return isDerivationRefused(der(0x30, hex("0609 2b06010401da47040b"),
                                   der(0x30, der(0x04, kz::test::fill(8, 0)), der(0x02, hex(cost)),
                                       der(0x02, hex(blockSize)), der(0x02, hex(lanes)))),
                               keys);
}

TEST(CredentialCostTest, TakesAMillionRoundsAndNoMore) {
    EXPECT_FALSE(isRoundsRefused(1'000'000));
    EXPECT_TRUE(isRoundsRefused(1'000'001));
    EXPECT_TRUE(isRoundsRefused(0x7FFFFFFF));
    EXPECT_TRUE(isRoundsRefused(-1));
}

TEST(CredentialCostTest, CountsTheCheckOfThePassword) {
    const Pkcs12Ptr pfx = pfxOf({});
    EXPECT_FALSE(isRefused(pfx.get()));
    ASSERT_EQ(PKCS12_set_mac(pfx.get(), "secret", -1, nullptr, 0, 1'000'001, EVP_sha256()), 1);
    EXPECT_TRUE(isRefused(pfx.get()));
}

TEST(CredentialCostTest, LooksIntoBagsInsideOfBags) {
    PfxSpec spec;
    spec.nestedKeys = 1;
    EXPECT_FALSE(isRefused(spec));
    spec.claimedKeyRounds = 1'000'001;
    EXPECT_TRUE(isRefused(spec));
}

TEST(CredentialCostTest, TakesFourMillionRoundsOfAllPartsAndNoMore) {
    PfxSpec spec;
    spec.nestedKeys = 4;
    spec.claimedKeyRounds = (4'000'000 - 2 * kUsualRounds) / 4;  // beside password and certificate
    EXPECT_FALSE(isRefused(spec));
    ++spec.claimedKeyRounds;
    EXPECT_TRUE(isRefused(spec));
}

TEST(CredentialCostTest, TakesTwoMillionBlocksOfScryptAndNoMore) {
    // 2^21 of them: 65536 times 8 times 4, and a factor of 1 is as good as none.
    EXPECT_FALSE(isScryptRefused("010000", "08", "04"));
    EXPECT_TRUE(isScryptRefused("010000", "08", "05"));
    EXPECT_FALSE(isScryptRefused("200000", "01", "01"));
    EXPECT_TRUE(isScryptRefused("200001", "01", "01"));
    // Twice 2^21 is more than four million for all parts.
    EXPECT_TRUE(isScryptRefused("200000", "01", "01", 2));
}

TEST(CredentialCostTest, NoFactorOfScryptHidesTheOthers) {
    // 0 would make all the work none, and 2 times 2^63 is 0 in 64 bits.
    EXPECT_TRUE(isScryptRefused("00", "010000", "21"));
    EXPECT_TRUE(isScryptRefused("02", "008000000000000000", "01"));
    // 2^64 and -1 are not numbers of 64 bits.
    EXPECT_TRUE(isScryptRefused("010000000000000000", "01", "01"));
    EXPECT_TRUE(isScryptRefused("ff", "01", "01"));
}

// OpenSSL refuses to derive a key from any of these, so they cost nothing.
TEST(CredentialCostTest, LeavesParametersOfAnotherFormToOpenSsl) {
    const Bytes null = hex("0500");
    EXPECT_FALSE(isDerivationRefused(der(0x30, hex("0609 2b06010401da47040b"), null)));  // scrypt
    EXPECT_FALSE(isDerivationRefused(der(0x30, hex("0609 2a864886f70d01050c"), null)));  // PBKDF2
    EXPECT_FALSE(isDerivationRefused(der(0x30, hex("0603 2a0304"), null)));              // unknown
    PfxSpec spec;
    spec.claimedKeyAlgorithm = der(0x30, hex("0609 2a864886f70d01050d"), null);  // PBES2
    EXPECT_FALSE(isRefused(spec));
    spec.claimedKeyAlgorithm = der(0x30, hex("060a 2a864886f70d010c0103"), null);  // triple DES
    EXPECT_FALSE(isRefused(spec));
}

TEST(CredentialCostTest, CountsTheRoundsOfOldCiphers) {
    const auto tripleDes = [](const char* rounds) {
        return der(0x30, hex("060a 2a864886f70d010c0103"),
                   der(0x30, der(0x04, kz::test::fill(8, 0)), der(0x02, hex(rounds))));
    };
    PfxSpec spec;
    spec.claimedKeyAlgorithm = tripleDes("0f4240");  // 1,000,000
    EXPECT_FALSE(isRefused(spec));
    spec.claimedKeyAlgorithm = tripleDes("0f4241");
    EXPECT_TRUE(isRefused(spec));
}

}  // namespace
}  // namespace qlix::hlx
