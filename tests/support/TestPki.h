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
    Bytes claimedKeyAlgorithm;  ///< in DER; the key says that it is encrypted like that
    unsigned nestedKeys = 0;    ///< so many copies of the key, in a bag inside of its part; 0: bare
    std::vector<Bytes> chain;   ///< certificates that stand behind the first
};

/// A PFX of the key and `certificate`, which need not belong together.
Bytes makePfx(const TestKey& key, const Bytes& certificate, const PfxSpec& spec = {});

/// A value in DER with a tag of one byte and the joined parts as its content, of 64 KB at most.
template <typename... Parts>
Bytes der(unsigned tag, const Parts&... parts) {
    const Bytes content = (Bytes() + ... + parts);
    const Bytes size = content.size() < 0x80
                           ? u8(content.size())
                           : u8(0x82) + u16(static_cast<unsigned>(content.size()));
    return u8(tag) + size + content;
}

/// The private key in PKCS#8 DER.
Bytes privateKeyBytes(const TestKey& key);

}  // namespace kz::test
