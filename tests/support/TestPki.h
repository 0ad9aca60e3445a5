#pragma once

#include <memory>
#include <string>
#include <vector>

#include <openssl/types.h>

#include "support/Bytes.h"

namespace kz::test {

enum class KeyKind { rsa2048, rsa1024, p256, p384 };

/// A private key, shared by copies.
using TestKey = std::shared_ptr<EVP_PKEY>;

/// The key of a kind and number. Made once for the process: RSA keys take their time.
TestKey testKey(KeyKind kind, int number = 0);

struct CertificateSpec {
    std::string name = "test";
    KeyKind key = KeyKind::rsa2048;
    int keyNumber = 0;
    long validFromSeconds = -3600;              ///< from now
    long validUntilSeconds = 400L * 24 * 3600;  ///< from now
    /// As OpenSSL writes it, "keyEncipherment,digitalSignature"; empty leaves the extension out.
    std::string keyUsage = "digitalSignature,keyEncipherment,keyAgreement";
};

/// A DER certificate, issued by the test authority "kz test authority" (P-256).
Bytes makeCertificate(const CertificateSpec& spec);
/// The test authority's own certificate in DER.
Bytes authorityCertificate();

enum class PfxCipher { aes256, tripleDes, rc2 };

struct PfxSpec {
    std::string password = "secret";
    PfxCipher cipher = PfxCipher::aes256;
    bool withKey = true;
    bool withCertificate = true;
    bool keyInEncryptedPart = false;  ///< otherwise beside it
    /// What the parts say of themselves, whatever was done; 0: the truth.
    long claimedKeyRounds = 0;
    long claimedCertificateRounds = 0;
    bool claimScrypt = false;  ///< the key is said to take hours of it
    std::vector<Bytes> chain;  ///< certificates that stand behind the first
};

/// A PFX of the key and `certificate`, which need not belong together.
Bytes makePfx(const TestKey& key, const Bytes& certificate, const PfxSpec& spec = {});

/// The private key in PKCS#8 DER.
Bytes privateKeyBytes(const TestKey& key);

}  // namespace kz::test
