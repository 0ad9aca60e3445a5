#pragma once

#include "qlix_hlx/Credential.h"
#include "qlix_hlx/Secret.h"

namespace qlix::hlx {

/// CMS SignedData around `content`, signed by the credential with SHA-256; its certificate and
/// chain are inside. DER. Throws Failure.
SecretBytes signRecord(const SecretBytes& content, const Credential& signer);

/// CMS AuthEnvelopedData around `content` for the key of `recipient`: AES-256-GCM, the key sent by
/// RSA-OAEP with SHA-256, or for an EC key by ephemeral ECDH with SHA-256. DER. Throws Failure.
SecretBytes sealFor(X509* recipient, const SecretBytes& content);

}  // namespace qlix::hlx
