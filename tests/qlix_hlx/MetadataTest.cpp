#include <algorithm>

#include "qlix_hlx/LibraryFixture.h"
#include "support/TestLicenseServer.h"

namespace qlix::hlx {
namespace {

using kz::test::Bytes;
using kz::test::CertificateSpec;
using kz::test::fill;
using kz::test::hex;
using kz::test::KeyKind;
using kz::test::MetadataRefused;
using kz::test::OpenedMetadata;
using kz::test::openMetadata;
using kz::test::TestKey;
using kz::test::testKey;
using kz::test::text;

class MetadataTest : public LibraryTest {
protected:
    struct Request {
        std::string url = "https://license.example/";
        CertificateSpec server = spec(KeyKind::rsa2048, 2);
        CertificateSpec packager = spec(KeyKind::p256, 3);
        kz::test::PfxSpec packagerFile;
        Bytes policy = text("<policy/>");
        std::uint32_t standalone = 1;
        const HLXBlobArray* extras = nullptr;
    };

    static CertificateSpec spec(KeyKind kind, int number) {
        CertificateSpec result;
        result.key = kind;
        result.keyNumber = number;
        return result;
    }

    HLXResult generate(const Request& request, Bytes* out) {
        Flags flags;
        flags.audio = 0;
        flags.clearMs = 1500;
        QlixHLXEncryptor* encryptor = makeEncryptor(flags);
        serverCertificate = kz::test::makeCertificate(request.server);
        QlixHLXCertificate* server = nullptr;
        EXPECT_EQ(readCertificate(serverCertificate, &server), HLX_OK);
        QlixHLXCertificate* transport = nullptr;
        EXPECT_EQ(readCertificate(transportCertificate, &transport), HLX_OK);
        QlixHLXCredential* credential = makeCredential(request.packager, request.packagerFile);
        const HLXBlob blob{request.policy.data(), sizeOf(request.policy)};
        const HLXBlobArray policies{&blob, 1};
        QlixHLXMetadata* metadata = nullptr;
        const HLXResult result = encryptors->generateMetadata(
            encryptor, request.url.data(), static_cast<std::uint32_t>(request.url.size()),
            transport, server, credential, &policies, 0, request.standalone, request.extras,
            nullptr, nullptr, &metadata);
        EXPECT_EQ(metadata == nullptr, result != HLX_OK);
        if (metadata != nullptr && out != nullptr) *out = bytesOfMetadata(metadata);
        HLXRelease(metadata);
        HLXRelease(credential);
        HLXRelease(transport);
        HLXRelease(server);
        HLXRelease(encryptor);
        return result;
    }
    Bytes bytesOfMetadata(QlixHLXMetadata* metadata) const {
        std::uint32_t size = 0;
        EXPECT_EQ(metadatas->size(metadata, &size), HLX_OK);
        Bytes bytes(size);
        std::uint32_t copied = 0;
        EXPECT_EQ(metadatas->copy(metadata, bytes.data(), &copied), HLX_OK);
        EXPECT_EQ(copied, size);
        return bytes;
    }

    Bytes transportCertificate = kz::test::makeCertificate(spec(KeyKind::p256, 4));
    Bytes serverCertificate;
};

std::uint32_t refused(std::uint32_t detail) { return detail * 65536 + 256; }

TEST_F(MetadataTest, LicenseServerReadsAllOfTheRecord) {
    for (const KeyKind kind : {KeyKind::rsa2048, KeyKind::p256}) {
        for (const KeyKind packager : {KeyKind::rsa2048, KeyKind::p256}) {
            Request request;
            request.server = spec(kind, 2);
            request.packager = spec(packager, 3);
            Bytes metadata;
            ASSERT_EQ(generate(request, &metadata), HLX_OK);
            const OpenedMetadata opened =
                openMetadata(metadata, testKey(kind, 2), serverCertificate);
            EXPECT_EQ(opened.contentId, "movie7");
            EXPECT_EQ(opened.keyId, hex("03321175c8ecabb5330e7d0b328ed3be"));
            EXPECT_EQ(opened.serverUrl, "https://license.example/");
            EXPECT_EQ(opened.transportFingerprint, kz::test::sha256(transportCertificate));
            EXPECT_EQ(opened.policies, std::vector<Bytes>{text("<policy/>")});
            EXPECT_EQ(opened.flags, (std::vector<unsigned long>{1, 0, 1, 2, 1500}));
            EXPECT_EQ(opened.contentKey, hex("ca9ac0898d52db13b9af74117f78ee31"));
            EXPECT_TRUE(opened.extras.empty());
        }
    }
}

TEST_F(MetadataTest, CertificatesBehindThePackagersOwnTravelWithItsSignature) {
    Request request;
    Bytes alone;
    ASSERT_EQ(generate(request, &alone), HLX_OK);
    request.packagerFile.chain = {transportCertificate};
    Bytes accompanied;
    ASSERT_EQ(generate(request, &accompanied), HLX_OK);
    EXPECT_EQ(openMetadata(accompanied, testKey(KeyKind::rsa2048, 2), serverCertificate).contentId,
              "movie7");
    // Signatures differ by some bytes in length.
    const auto more = static_cast<double>(accompanied.size()) - static_cast<double>(alone.size());
    EXPECT_NEAR(more, static_cast<double>(transportCertificate.size()), 16);
}

TEST_F(MetadataTest, KeyTravelsByOaepWithSha256) {
    Bytes metadata;
    ASSERT_EQ(generate({}, &metadata), HLX_OK);
    // AlgorithmIdentifier: id-RSAES-OAEP with SHA-256, and MGF1 with SHA-256.
    const Bytes oaep = hex(R"(3038 06092a864886f70d010107 302b
        a00d 300b 0609608648016503040201
        a11a 3018 06092a864886f70d010108 300b 0609608648016503040201)");
    EXPECT_NE(std::search(metadata.begin(), metadata.end(), oaep.begin(), oaep.end()),
              metadata.end());
}

TEST_F(MetadataTest, NothingOfItIsReadableWithoutTheKey) {
    Bytes metadata;
    ASSERT_EQ(generate({}, &metadata), HLX_OK);
    for (const Bytes& part : {text("movie7"), text("license.example"), text("<policy/>"),
                              hex("ca9ac0898d52db13b9af74117f78ee31"), kCommonKey}) {
        EXPECT_EQ(std::search(metadata.begin(), metadata.end(), part.begin(), part.end()),
                  metadata.end());
    }
    EXPECT_THROW(openMetadata(metadata, testKey(KeyKind::rsa2048, 9), serverCertificate),
                 MetadataRefused);
}

TEST_F(MetadataTest, AChangedBitIsRefused) {
    Request request;
    request.server = spec(KeyKind::p256, 2);
    Bytes metadata;
    ASSERT_EQ(generate(request, &metadata), HLX_OK);
    const TestKey key = testKey(KeyKind::p256, 2);
    const OpenedMetadata clear = openMetadata(metadata, key, serverCertificate);
    std::size_t refusals = 0;
    for (std::size_t at = 0; at < metadata.size(); ++at) {
        Bytes changed = metadata;
        changed[at] = static_cast<std::uint8_t>(changed[at] ^ 1);
        try {
            // Bits that only describe the envelope (a version number) may change without harm.
            EXPECT_EQ(openMetadata(changed, key, serverCertificate).contentKey, clear.contentKey);
        } catch (const MetadataRefused&) {
            ++refusals;
        }
    }
    EXPECT_GT(refusals, metadata.size() - 100);
}

TEST_F(MetadataTest, AServerCertificateOutsideItsValidityFails) {
    Request request;
    request.server.validFromSeconds = -100;
    request.server.validUntilSeconds = -10;
    EXPECT_EQ(generate(request, nullptr), refused(HLX_CERT_EXPIRED));
    request.server.validFromSeconds = 1000;
    request.server.validUntilSeconds = 2000;
    EXPECT_EQ(generate(request, nullptr), refused(HLX_CERT_NOT_YET_VALID));
}

TEST_F(MetadataTest, AnExpiredPackagerCredentialFails) {
    Request request;
    request.packager.validUntilSeconds = -10;
    EXPECT_EQ(generate(request, nullptr), refused(HLX_CERT_EXPIRED));
}

TEST_F(MetadataTest, AnExpiredTransportCertificateDoesNotMatter) {
    CertificateSpec expired = spec(KeyKind::p256, 4);
    expired.validUntilSeconds = -10;
    transportCertificate = kz::test::makeCertificate(expired);
    EXPECT_EQ(generate({}, nullptr), HLX_OK);
}

TEST_F(MetadataTest, PolicyAndUrlAreChecked) {
    Request request;
    request.policy = {};
    EXPECT_EQ(generate(request, nullptr), HLX_ERROR_POLICY_EMPTY);
    request.policy = fill(10 * 1024 * 1024, 'x');
    EXPECT_EQ(generate(request, nullptr), HLX_ERROR_POLICY_TOO_LARGE);
    request = Request();
    request.url = "";
    EXPECT_EQ(generate(request, nullptr), HLX_ERROR_SERVER_URL_EMPTY);
}

TEST_F(MetadataTest, ExtraBlobsGoWithTheFlag) {
    const Bytes extra = text("streaming");
    const HLXBlob blob{extra.data(), sizeOf(extra)};
    const HLXBlobArray extras{&blob, 1};
    Request request;
    request.extras = &extras;
    EXPECT_EQ(generate(request, nullptr), HLX_ERROR_BAD_ARGUMENT);
    request.standalone = 0;
    Bytes metadata;
    ASSERT_EQ(generate(request, &metadata), HLX_OK);
    EXPECT_EQ(openMetadata(metadata, testKey(KeyKind::rsa2048, 2), serverCertificate).extras,
              std::vector<Bytes>{extra});
    request.extras = nullptr;
    EXPECT_EQ(generate(request, nullptr), HLX_ERROR_BAD_ARGUMENT);
}

class StreamingTest : public MetadataTest {
protected:
    void SetUp() override {
        MetadataTest::SetUp();
        encryptor = makeEncryptor();
    }
    void TearDown() override {
        HLXRelease(encryptor);
        MetadataTest::TearDown();
    }

    HLXResult prepare(const HLXDigestList* digests, const HLXTextList* texts,
                      QlixHLXCredential* credential, QlixHLXCertificate* extra, Bytes* out) {
        const HLXBlob policy{reinterpret_cast<const std::uint8_t*>("p"), 1};
        HLXBlob blob{};
        const HLXResult result = encryptors->prepareStreaming(
            encryptor, nullptr, &policy, nullptr, nullptr, nullptr, "u", credential, 1, &extra,
            extra == nullptr ? 0 : 1, digests, texts, &blob, nullptr);
        if (result == HLX_OK) *out = kz::test::bytesOf(blob.data, blob.size);
        return result;
    }

    QlixHLXEncryptor* encryptor = nullptr;
    Bytes record;
};

TEST_F(StreamingTest, RecordHasTheListsInOrder) {
    const Bytes digest = hex("abcd");
    const HLXBlob blob{digest.data(), 2};
    const HLXDigestEntry digestEntry{9, "2.16.840.1.101.3.4.2.1", 22, &blob, nullptr};
    const HLXDigestList digests{&digestEntry, 1};
    const HLXTextEntry textEntry{{"a", nullptr, "c", nullptr}};
    const HLXTextList texts{&textEntry, 1};
    ASSERT_EQ(prepare(&digests, &texts, nullptr, nullptr, &record), HLX_OK);
    EXPECT_EQ(record, hex(R"(303c
        020101  040175  040170  3000
        3021 301f 020109 0416 322e31362e3834302e312e3130312e332e342e322e31 0402abcd
        300c 300a a003040161 a203040163)"));
}

TEST_F(StreamingTest, ASecondCredentialSignsAndExtraCertificatesAreNamed) {
    CertificateSpec extraSpec = spec(KeyKind::p256, 5);
    const Bytes extraDer = kz::test::makeCertificate(extraSpec);
    QlixHLXCertificate* extra = nullptr;
    ASSERT_EQ(readCertificate(extraDer, &extra), HLX_OK);
    QlixHLXCredential* credential = makeCredential(spec(KeyKind::p256, 6));
    ASSERT_EQ(prepare(nullptr, nullptr, credential, extra, &record), HLX_OK);
    EXPECT_EQ(kz::test::verifiedContent(record), hex("3031 020101 040175 040170 3022 0420") +
                                                     kz::test::sha256(extraDer) + hex("3000 3000"));
    HLXRelease(credential);
    HLXRelease(extra);
}

TEST_F(StreamingTest, EntriesWithoutTextOrWithAnotherDigestAreRefused) {
    const HLXTextEntry textEntry{{nullptr, "b", nullptr, nullptr}};
    const HLXTextList texts{&textEntry, 1};
    EXPECT_EQ(prepare(nullptr, &texts, nullptr, nullptr, &record), HLX_ERROR_BAD_ARGUMENT);
    const HLXBlob blob{nullptr, 0};
    const HLXDigestEntry digestEntry{9, "1.3.14.3.2.26", 13, &blob, nullptr};
    const HLXDigestList digests{&digestEntry, 1};
    EXPECT_EQ(prepare(&digests, nullptr, nullptr, nullptr, &record), HLX_ERROR_UNKNOWN_DIGEST);
    const HLXDigestEntry withoutDigest{9, "1.3.14.3.2.26", 13, nullptr, nullptr};
    const HLXDigestList incomplete{&withoutDigest, 1};
    EXPECT_EQ(prepare(&incomplete, nullptr, nullptr, nullptr, &record), HLX_ERROR_BAD_ARGUMENT);
}

}  // namespace
}  // namespace qlix::hlx
