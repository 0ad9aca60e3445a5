#include <filesystem>

#include "cli/ProtectFixture.h"

namespace kz::test {
namespace {

const std::string kRefused = "Error 11: Error in the Encryption Library \n";
const std::string kNotIdentified =
    "Error 14: Error in the Encryption Library Certificate not Identified\n";

const char* const kKeyFiles[] = {"common-key", "transport-cert", "license-server-cert",
                                 "packager-credential", "policy-file"};

/// Every file of a protected job in every bad state: one error line, and no output folder.
class ProtectInputsTest : public ProtectFixture {
protected:
    ProcessResult runWith(const std::string& option, const std::string& value) {
        return packager(withProtection(
            "short_3s.flv", {"--" + option + "=" + value, "--output-path=" + (work / "out")}));
    }
    void expectRefused(const std::string& option, const std::string& value,
                       const std::string& line) {
        SCOPED_TRACE(option + "=" + value);
        const ProcessResult result = runWith(option, value);
        EXPECT_EQ(result.status, std::stoi(line.substr(6)));
        EXPECT_EQ(result.out, "");
        EXPECT_EQ(result.err, line);
        EXPECT_FALSE(fileExists(work / "out"));
    }
    void expectRefused(const std::string& option, const Bytes& content, const std::string& line) {
        expectRefused(option, files.folder.write("input", content), line);
    }
    void expectTaken(const std::string& option, const Bytes& content) {
        SCOPED_TRACE(option);
        const ProcessResult result = runWith(option, files.folder.write("input", content));
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(result.err, "");
        EXPECT_EQ(outputs("out").size(), 3U);
        std::filesystem::remove_all(work / "out");
    }
    static Bytes pfxOf(const TestKey& key, const Bytes& certificate, PfxSpec spec = {}) {
        spec.password = "open sesame 4711";
        return makePfx(key, certificate, spec);
    }
    static CertificateSpec certificate(KeyKind kind, const std::string& usage) {
        CertificateSpec spec;
        spec.key = kind;
        spec.keyUsage = usage;
        return spec;
    }
};

TEST_F(ProtectInputsTest, AMissingFileIsToldByItsName) {
    const std::string missing = files.folder / "none";
    for (const char* option : kKeyFiles) {
        expectRefused(option, missing, "Error 1: " + missing + " file does not exist\n");
    }
}

TEST_F(ProtectInputsTest, AFolderIsNoFile) {
    const std::string folder = files.folder.path();
    for (const char* option : kKeyFiles) {
        expectRefused(option, folder, "Error 1: Path is not a file " + folder + "\n");
    }
    expectRefused("input-file", folder, "Error 1: Path is not a file " + folder + "\n");
}

TEST_F(ProtectInputsTest, AFileThatCantBeOpenedCountsAsMissing) {
    const std::string socket = work.makeSocket("socket");
    for (const char* option : kKeyFiles) {
        expectRefused(option, socket, "Error 1: " + socket + " file does not exist\n");
    }
}

TEST_F(ProtectInputsTest, AnEmptyFileIsRefused) {
    expectRefused("common-key", Bytes(), kRefused);
    expectRefused("transport-cert", Bytes(), kNotIdentified);
    expectRefused("license-server-cert", Bytes(), kNotIdentified);
    expectRefused("packager-credential", Bytes(), kRefused);
    expectRefused("policy-file", Bytes(), kRefused);
}

TEST_F(ProtectInputsTest, ATruncatedFileIsRefused) {
    const Bytes pfx = readFile(files.credential);
    for (const std::size_t left : {1U, 2U, 4U, 100U}) {
        expectRefused("transport-cert", files.transportDer.cutTo(left), kNotIdentified);
        expectRefused("license-server-cert", files.serverDer.cutTo(left), kNotIdentified);
        expectRefused("packager-credential", pfx.cutTo(left), kRefused);
    }
    expectRefused("common-key", files.commonKeyBytes.cutTo(15), kRefused);
    expectRefused("transport-cert", files.transportDer.cutTo(files.transportDer.size() - 1),
                  kNotIdentified);
    expectRefused("license-server-cert", files.serverDer.cutTo(files.serverDer.size() - 1),
                  kNotIdentified);
    expectRefused("packager-credential", pfx.cutTo(pfx.size() - 1), kRefused);
}

TEST_F(ProtectInputsTest, AFileOfAnotherKindIsRefusedWhereItsBytesHaveAForm) {
    const Bytes pfx = readFile(files.credential);
    const Bytes key = privateKeyBytes(testKey(KeyKind::p256, 1));
    const Bytes pem = text("-----BEGIN CERTIFICATE-----\n" + toBase64(files.serverDer) +
                           "\n-----END CERTIFICATE-----\n");
    for (const Bytes& other : {pfx, key, pem, text("<policy/>"), fill(1000, 0)}) {
        expectRefused("transport-cert", other, kNotIdentified);
        expectRefused("license-server-cert", other, kNotIdentified);
    }
    for (const Bytes& other : {files.serverDer, key, pem, text("<policy/>"), fill(1000, 0)}) {
        expectRefused("packager-credential", other, kRefused);
    }
    // Bytes are bytes for these two.
    expectTaken("common-key", files.serverDer);
    expectTaken("policy-file", pfx);
}

TEST_F(ProtectInputsTest, AFileThatGoesOnBehindItsEndOrItsLimitIsRefused) {
    for (const char* option : {"transport-cert", "license-server-cert"}) {
        expectRefused(option, files.serverDer + files.transportDer, kRefused);
        expectRefused(option, files.serverDer + u8(0), kRefused);
    }
    expectRefused("packager-credential", readFile(files.credential) + u8(0), kRefused);
    expectTaken("policy-file", fill(65536, 'p'));
    expectRefused("policy-file", fill(65537, 'p'), kRefused);
    expectRefused("policy-file", fill(10 * 1024 * 1024, 'p'), kRefused);
    const Bytes large = fill(10 * 1024 * 1024, 0x30);
    expectRefused("transport-cert", large, kNotIdentified);
    expectRefused("license-server-cert", large, kNotIdentified);
    expectRefused("packager-credential", large, kRefused);
}

TEST_F(ProtectInputsTest, ACertificateThatCantReceiveAKeyIsRefused) {
    for (const char* option : {"transport-cert", "license-server-cert"}) {
        expectRefused(option, makeCertificate(certificate(KeyKind::rsa1024, "keyEncipherment")),
                      kRefused);
        expectRefused(option, makeCertificate(certificate(KeyKind::p384, "keyAgreement")),
                      kRefused);
        expectRefused(option, makeCertificate(certificate(KeyKind::rsa2048, "digitalSignature")),
                      kRefused);
        expectRefused(option, makeCertificate(certificate(KeyKind::p256, "digitalSignature")),
                      kRefused);
        expectTaken(option, makeCertificate(certificate(KeyKind::rsa2048, "keyEncipherment")));
        expectTaken(option, makeCertificate(certificate(KeyKind::p256, "keyAgreement")));
    }
}

TEST_F(ProtectInputsTest, ACertificateOutsideItsValidityIsRefused) {
    CertificateSpec expired = ProtectionFiles::spec(2);
    expired.validUntilSeconds = -10;
    expectRefused("license-server-cert", makeCertificate(expired), kRefused);
    CertificateSpec early = ProtectionFiles::spec(2);
    early.validFromSeconds = 3600;
    expectRefused("license-server-cert", makeCertificate(early), kRefused);
    CertificateSpec signer = ProtectionFiles::spec(3);
    signer.validUntilSeconds = -10;
    expectRefused("packager-credential", pfxOf(testKey(KeyKind::p256, 3), makeCertificate(signer)),
                  kRefused);
}

TEST_F(ProtectInputsTest, ACredentialThatCantSignIsRefused) {
    const TestKey key = testKey(KeyKind::p256, 3);
    const Bytes own = makeCertificate(ProtectionFiles::spec(3));
    // A key that the certificate doesn't belong to.
    expectRefused("packager-credential", pfxOf(testKey(KeyKind::p256, 4), own), kRefused);
    PfxSpec withoutKey;
    withoutKey.withKey = false;
    expectRefused("packager-credential", pfxOf(key, own, withoutKey), kRefused);
    PfxSpec withoutCertificate;
    withoutCertificate.withCertificate = false;
    expectRefused("packager-credential", pfxOf(key, own, withoutCertificate), kRefused);
    CertificateSpec usage = ProtectionFiles::spec(3);
    usage.keyUsage = "keyEncipherment";
    expectRefused("packager-credential", pfxOf(key, makeCertificate(usage)), kRefused);
}

TEST_F(ProtectInputsTest, OldCredentialsOpen) {
    const TestKey key = testKey(KeyKind::p256, 3);
    const Bytes own = makeCertificate(ProtectionFiles::spec(3));
    for (const PfxCipher cipher : {PfxCipher::aes256, PfxCipher::tripleDes, PfxCipher::rc2}) {
        PfxSpec spec;
        spec.cipher = cipher;
        expectTaken("packager-credential", pfxOf(key, own, spec));
    }
}

TEST_F(ProtectInputsTest, AWrongPasswordAndALongContentIdAreRefused) {
    for (const char* password : {"wrong", "open sesame 4711 ", "OPEN SESAME 4711"}) {
        expectRefused("credential-pwd", std::string(password), kRefused);
    }
    expectRefused("content-id", std::string(513, 'c'), kRefused);
}

// Clips, manifests and settings are looked into when the keys are found right; nothing but the
// folder is there then.
TEST_F(ProtectInputsTest, OtherFilesAreLookedIntoWhenTheKeysAreRight) {
    const std::string missing = files.folder / "none";
    const std::string empty = files.folder.write("empty", {});
    const struct {
        const char* option;
        std::string value;
        std::string line;
    } cases[] = {
        {"input-file", missing, "Error 1: " + missing + " file does not exist\n"},
        {"input-file", empty, "Error 3: invalid input file \n"},
        {"input-file", files.policy, "Error 3: invalid input file \n"},
        {"manifest-file", missing, "Error 1: " + missing + " file does not exist\n"},
        {"manifest-file", files.folder.path(),
         "Error 1: Path is not a file " + files.folder.path() + "\n"},
        {"manifest-file", empty, "Error 3: invalid input file " + empty + "\n"},
        {"manifest-file", files.serverCert,
         "Error 3: invalid input file " + files.serverCert + "\n"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.option) + "=" + c.value);
        const ProcessResult result = runWith(c.option, c.value);
        EXPECT_EQ(result.status, std::stoi(c.line.substr(6)));
        EXPECT_EQ(result.err, c.line);
        EXPECT_EQ(outputs("out"), std::vector<std::string>());
    }
}

}  // namespace
}  // namespace kz::test
