#pragma once

#include <string>

#include "offline/OptionFixture.h"
#include "support/TempDir.h"
#include "support/TestLicenseServer.h"
#include "support/TestPki.h"

namespace torvo::offline {

/// The eight inputs of a protected job in a folder of their own, and an output folder beside them
/// that isn't made.
class ProtectionInputs {
public:
    ProtectionInputs() : ProtectionInputs(spec(1)) {}
    /// `transport` is the transport certificate.
    explicit ProtectionInputs(const kz::test::CertificateSpec& transport)
        : transportDer(kz::test::makeCertificate(transport)),
          serverDer(kz::test::makeCertificate(spec(2))) {
        commonKey = folder.write("common.key", kz::test::hex("000102030405060708090a0b0c0d0e0f"));
        transportCert = folder.write("transport.der", transportDer);
        serverCert = folder.write("server.der", serverDer);
        credential = folder.write(
            "packager.pfx", kz::test::makePfx(serverKey(3), kz::test::makeCertificate(spec(3))));
        policy = folder.write("policy.xml", kz::test::text("<policy/>"));
    }

    static kz::test::CertificateSpec spec(int keyNumber) {
        kz::test::CertificateSpec result;
        result.key = kz::test::KeyKind::p256;
        result.keyNumber = keyNumber;
        return result;
    }
    static kz::test::TestKey serverKey(int number = 2) {
        return kz::test::testKey(kz::test::KeyKind::p256, number);
    }

    OptionMap options() const {
        return defaultsWith({{"common-key", commonKey},
                             {"content-id", std::string("movie7")},
                             {"license-server-url", std::string("https://license.example/")},
                             {"transport-cert", transportCert},
                             {"license-server-cert", serverCert},
                             {"packager-credential", credential},
                             {"credential-pwd", std::string("secret")},
                             {"policy-file", policy},
                             {"output-path", folder / "out"}});
    }
    /// The options, one replaced.
    OptionMap optionsWith(const std::string& key, const boost::any& value) const {
        OptionMap result = options();
        result[key] = value;
        return result;
    }

    kz::test::TempDir folder;
    kz::test::Bytes transportDer;
    kz::test::Bytes serverDer;
    std::string commonKey;
    std::string transportCert;
    std::string serverCert;
    std::string credential;
    std::string policy;
};

}  // namespace torvo::offline
