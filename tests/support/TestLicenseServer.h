#pragma once

#include <stdexcept>
#include <string>
#include <vector>

#include "support/Bytes.h"
#include "support/TestPki.h"

namespace kz::test {

/// Thrown for metadata that doesn't open.
struct MetadataRefused : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// What a license server reads from protection metadata.
struct OpenedMetadata {
    std::string contentId;
    Bytes keyId;
    std::string serverUrl;
    Bytes transportFingerprint;
    std::vector<Bytes> policies;
    std::vector<unsigned long> flags;
    Bytes contentKey;
    std::vector<Bytes> extras;
};

/// Opens the envelope with the server's key, checks the signature against the test authority, and
/// reads the record. Throws MetadataRefused.
OpenedMetadata openMetadata(const Bytes& metadata, const TestKey& serverKey,
                            const Bytes& serverCertificate);

/// The content of a SignedData after a check of its signature alone. Throws MetadataRefused.
Bytes verifiedContent(const Bytes& signedData);

/// AES-128-CBC with PKCS#7 padding. Throws MetadataRefused for bad padding.
Bytes decryptSample(const Bytes& encrypted, const Bytes& key, const Bytes& iv);

/// SHA-256.
Bytes sha256(const Bytes& bytes);

}  // namespace kz::test
