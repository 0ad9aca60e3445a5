#include "support/ProtectionFiles.h"

namespace kz::test {

ProtectionFiles::ProtectionFiles() : ProtectionFiles(spec(1)) {}

ProtectionFiles::ProtectionFiles(const CertificateSpec& transport)
    : commonKeyBytes(hex("000102030405060708090a0b0c0d0e0f")),
      contentKey(hex("ca9ac0898d52db13b9af74117f78ee31")),
      transportDer(makeCertificate(transport)),
      serverDer(makeCertificate(spec(2))) {
    PfxSpec pfx;
    pfx.password = password;
    commonKey = folder.write("common.key", commonKeyBytes);
    transportCert = folder.write("transport.der", transportDer);
    serverCert = folder.write("server.der", serverDer);
    credential = folder.write("packager.pfx",
                              makePfx(testKey(KeyKind::p256, 3), makeCertificate(spec(3)), pfx));
    policy = folder.write("policy.xml", text("<policy/>"));
}

CertificateSpec ProtectionFiles::spec(int keyNumber) {
    CertificateSpec result;
    result.key = KeyKind::p256;
    result.keyNumber = keyNumber;
    return result;
}

TestKey ProtectionFiles::serverKey() { return testKey(KeyKind::p256, 2); }

std::vector<std::string> ProtectionFiles::arguments() const {
    return {"--common-key=" + commonKey,           "--content-id=" + contentId,
            "--license-server-url=" + url,         "--transport-cert=" + transportCert,
            "--license-server-cert=" + serverCert, "--packager-credential=" + credential,
            "--credential-pwd=" + password,        "--policy-file=" + policy};
}

}  // namespace kz::test
