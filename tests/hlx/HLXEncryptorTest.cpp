#include <functional>

#include <gtest/gtest.h>

#include "hlx/DRMRegistration.h"
#include "hlx/HLXEncryptor.h"
#include "hlx/HLXException.h"
#include "hlx/HLXLibrary.h"
#include "hlx/HLXPolicyParser.h"
#include "support/TestLicenseServer.h"
#include "support/TestPki.h"

namespace hlx {
namespace {

using kz::test::CertificateSpec;
using kz::test::KeyKind;
using kz::test::testKey;

constexpr KeyKind kKind = KeyKind::p256;

class HLXEncryptorTest : public ::testing::Test {
protected:
    void SetUp() override { startLibrary(); }
    void TearDown() override {
        HLXRelease(parties.transportCertificate);
        HLXRelease(parties.serverCertificate);
        HLXRelease(parties.credential);
        stopLibrary();
    }

    void makeParties() {
        const DRMRegistration registration;
        parties.serverUrl = "https://license.example/";
        parties.transportCertificate = registration.certificate(certificate(1));
        serverCertificate = certificate(2);
        parties.serverCertificate = registration.certificate(serverCertificate);
        parties.credential = registration.credential(
            secret(kz::test::makePfx(testKey(kKind, 3), certificate(3))), "secret");
    }
    static kz::test::Bytes certificate(int number) {
        CertificateSpec spec;
        spec.key = kKind;
        spec.keyNumber = number;
        return kz::test::makeCertificate(spec);
    }
    static SecretBytes secret(const kz::test::Bytes& bytes) {
        return SecretBytes(bytes.begin(), bytes.end());
    }
    static std::uint32_t codeOf(const std::function<void()>& step) {
        try {
            step();
        } catch (const HLXException& failure) {
            return failure.code();
        }
        return 1000;
    }

    const SecretBytes kCommonKey = secret(kz::test::hex("000102030405060708090a0b0c0d0e0f"));
    MetadataParties parties;
    kz::test::Bytes serverCertificate;
};

TEST_F(HLXEncryptorTest, EncryptsWhatItPrepared) {
    const HLXEncryptor encryptor(kCommonKey, "movie7", {1, 1, 1, 2, 0});
    const kz::test::Bytes sample = kz::test::pattern(100, 5);
    const EncryptionInfo info = encryptor.prepareSample(sample.data(), 100, 1, 0, false);
    ASSERT_EQ(info.encrypted, 1U);
    kz::test::Bytes output(info.encryptedSize);
    kz::test::Bytes iv(info.ivSize);
    encryptor.encrypt(sample.data(), 100, info, output.data(), iv.data());
    EXPECT_EQ(
        kz::test::decryptSample(output, kz::test::hex("ca9ac0898d52db13b9af74117f78ee31"), iv),
        sample);
}

// The order of the words is video, audio, data, level, clear start.
TEST_F(HLXEncryptorTest, FlagsReachTheLibraryInTheirOrder) {
    const auto encrypts = [&](const EncryptionFlags& flags, std::uint32_t trackClass) {
        const HLXEncryptor encryptor(kCommonKey, "movie7", flags);
        return encryptor.prepareSample(nullptr, 0, trackClass, 100, false).encrypted == 1;
    };
    EXPECT_TRUE(encrypts({1, 0, 0, 2, 0}, 1));
    EXPECT_FALSE(encrypts({1, 0, 0, 2, 0}, 2));
    EXPECT_TRUE(encrypts({0, 1, 0, 2, 0}, 2));
    EXPECT_TRUE(encrypts({0, 0, 1, 2, 0}, 4));
    EXPECT_FALSE(encrypts({1, 1, 1, 2, 101}, 1));
    EXPECT_EQ(codeOf([&] { encrypts({1, 1, 1, 3, 0}, 1); }), HLX_ERROR_BAD_VIDEO_LEVEL);
}

TEST_F(HLXEncryptorTest, MetadataOpensForTheLicenseServer) {
    makeParties();
    const HLXEncryptor encryptor(kCommonKey, "movie7", {1, 1, 1, 2, 0});
    const DRMMetadata metadata = encryptor.generateMetadata(parties, {'p'});
    ASSERT_FALSE(metadata.isNull());
    const Bytes bytes = metadata.bytes();
    const auto opened = kz::test::openMetadata(kz::test::bytesOf(bytes.data(), bytes.size()),
                                               testKey(kKind, 2), serverCertificate);
    EXPECT_EQ(opened.contentId, "movie7");
    EXPECT_EQ(opened.serverUrl, "https://license.example/");
}

TEST_F(HLXEncryptorTest, AStreamingRecordTravelsInTheMetadata) {
    makeParties();
    const HLXEncryptor encryptor(kCommonKey, "movie7", {1, 1, 1, 2, 0});
    const Bytes policy{'p'};
    StreamingParts parts;
    parts.policy = &policy;
    parts.serverUrl = "u";
    const Bytes record = encryptor.prepareStreaming(parts);
    EXPECT_EQ(record, Bytes(kz::test::hex("300f 020101 040175 040170 3000 3000 3000")));
    const Bytes bytes = encryptor.generateMetadata(parties, policy, record).bytes();
    const auto opened = kz::test::openMetadata(kz::test::bytesOf(bytes.data(), bytes.size()),
                                               testKey(kKind, 2), serverCertificate);
    ASSERT_EQ(opened.extras.size(), 1U);
    EXPECT_EQ(Bytes(opened.extras[0]), record);
}

TEST_F(HLXEncryptorTest, CopiesShareAHandleThatOutlivesTheStop) {
    HLXEncryptor copy;
    EXPECT_TRUE(copy.isNull());
    {
        const HLXEncryptor encryptor(kCommonKey, "movie7", {1, 1, 1, 2, 0});
        copy = encryptor;
    }
    EXPECT_EQ(copy.prepareSample(nullptr, 0, 1, 0, false).ivSize, 16U);
    stopLibrary();
    EXPECT_EQ(codeOf([&] { copy.prepareSample(nullptr, 0, 1, 0, false); }),
              HLX_ERROR_NOT_INITIALIZED);
    copy = HLXEncryptor();
    startLibrary();
}

TEST_F(HLXEncryptorTest, BytesThatAreNoCertificateGiveCodeZero) {
    const DRMRegistration registration;
    EXPECT_EQ(codeOf([&] { registration.certificate({}); }), 0U);
    EXPECT_EQ(codeOf([&] { registration.certificate({'x', 'y'}); }), 0U);
    // A chain is a certificate and more: that is told apart.
    EXPECT_EQ(codeOf([&] { registration.certificate(certificate(1) + certificate(2)); }), 256U);
}

TEST_F(HLXEncryptorTest, ABadCredentialGivesACodeOfItsOwn) {
    const DRMRegistration registration;
    EXPECT_EQ(codeOf([&] { registration.credential({}, "secret"); }),
              HLX_ERROR_CREDENTIAL_UNREADABLE);
    const auto pfx = kz::test::makePfx(testKey(kKind, 3), certificate(3));
    EXPECT_EQ(codeOf([&] { registration.credential(secret(pfx), "wrong"); }),
              HLX_ERROR_CREDENTIAL_WRONG_PASSWORD);
}

TEST_F(HLXEncryptorTest, PolicyParserIsNull) { EXPECT_TRUE(HLXPolicyParser().isNull()); }

}  // namespace
}  // namespace hlx
