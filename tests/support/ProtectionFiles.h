#pragma once

#include <string>
#include <vector>

#include "support/TempDir.h"
#include "support/TestPki.h"

namespace kz::test {

/// The inputs of a protected job in a folder of their own: P-256 certificates of the test
/// authority, a packager credential, a common key, a policy.
class ProtectionFiles {
public:
    ProtectionFiles();
    explicit ProtectionFiles(const CertificateSpec& transport);

    /// What the files are made of: a P-256 certificate for the key of this number. The transport
    /// certificate has 1, the license server's 2, the packager's 3.
    static CertificateSpec spec(int keyNumber);
    static TestKey serverKey();

    /// The options of a command line that name them.
    std::vector<std::string> arguments() const;

    TempDir folder;
    Bytes commonKeyBytes;
    Bytes contentKey;  ///< by openssl kdf, for the content id below
    Bytes transportDer;
    Bytes serverDer;
    std::string contentId = "movie7";
    std::string url = "https://license.example/";
    std::string password = "open sesame 4711";
    std::string commonKey;  ///< paths, as all below
    std::string transportCert;
    std::string serverCert;
    std::string credential;
    std::string policy;
};

}  // namespace kz::test
