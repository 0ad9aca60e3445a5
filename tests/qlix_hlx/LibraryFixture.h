#pragma once

#include <string>

#include <gtest/gtest.h>

#include "qlix_hlx/qlix_hlx.h"
#include "support/Bytes.h"
#include "support/TestPki.h"

namespace qlix::hlx {

/// A started library with its tables, and what most tests need of it.
class LibraryTest : public ::testing::Test {
protected:
    using Bytes = kz::test::Bytes;

    void SetUp() override {
        const HLXInitRecord record = {};
        ASSERT_EQ(HLXInitialize(&record), HLX_OK);
        ASSERT_EQ(HLX_GetEncryptorInterface(&encryptors), HLX_OK);
        ASSERT_EQ(HLX_GetMetadataInterface(&metadatas), HLX_OK);
        ASSERT_EQ(HLX_GetRegistrationInterface(&registration), HLX_OK);
    }
    void TearDown() override { EXPECT_EQ(HLXTerminate(), HLX_OK); }

    static std::uint32_t sizeOf(const Bytes& bytes) {
        return static_cast<std::uint32_t>(bytes.size());
    }

    struct Flags {
        std::uint32_t video = 1, audio = 1, data = 1, level = 2, clearMs = 0;
    };

    HLXResult create(QlixHLXEncryptor** out, const Bytes& key, const std::string& contentId,
                     const Flags& flags) const {
        return encryptors->create(out, key.data(), sizeOf(key), contentId.data(),
                                  static_cast<std::uint32_t>(contentId.size()), flags.video,
                                  flags.audio, flags.data, flags.level, flags.clearMs, 1, 0,
                                  nullptr);
    }
    QlixHLXEncryptor* makeEncryptor(const Flags& flags) const {
        QlixHLXEncryptor* encryptor = nullptr;
        EXPECT_EQ(create(&encryptor, kCommonKey, "movie7", flags), HLX_OK);
        return encryptor;
    }
    QlixHLXEncryptor* makeEncryptor() const { return makeEncryptor(Flags()); }

    HLXResult readCertificate(const Bytes& der, QlixHLXCertificate** out) const {
        return registration->certificateFromBytes(nullptr, der.data(), sizeOf(der), out);
    }
    QlixHLXCertificate* makeCertificate(const kz::test::CertificateSpec& spec) const {
        QlixHLXCertificate* certificate = nullptr;
        EXPECT_EQ(readCertificate(kz::test::makeCertificate(spec), &certificate), HLX_OK);
        return certificate;
    }

    HLXResult readCredential(const Bytes& pfx, const std::string& password,
                             QlixHLXCredential** out) const {
        return registration->credentialFromBytes(nullptr, pfx.data(), sizeOf(pfx), password.data(),
                                                 static_cast<std::uint32_t>(password.size()), out);
    }
    QlixHLXCredential* makeCredential(const kz::test::CertificateSpec& spec,
                                      const kz::test::PfxSpec& pfxSpec = {}) const {
        QlixHLXCredential* credential = nullptr;
        const Bytes pfx = kz::test::makePfx(kz::test::testKey(spec.key, spec.keyNumber),
                                            kz::test::makeCertificate(spec), pfxSpec);
        EXPECT_EQ(readCredential(pfx, "secret", &credential), HLX_OK);
        return credential;
    }

    const Bytes kCommonKey = kz::test::hex("000102030405060708090a0b0c0d0e0f");
    const HLXEncryptorTable* encryptors = nullptr;
    const HLXMetadataTable* metadatas = nullptr;
    const HLXRegistrationTable* registration = nullptr;
};

}  // namespace qlix::hlx
