#pragma once

#include <string_view>

#include "qlix_hlx/ByteView.h"
#include "qlix_hlx/OpenSslPtr.h"

namespace qlix::hlx {

/// Someone who can sign: a private key, its certificate, and the other certificates that came
/// along, which may be null.
struct Credential {
    KeyPtr key;
    X509Ptr certificate;
    X509StackPtr chain;
};

/// Opens a PFX. The key must fit one of its certificates, be RSA of at least 2048 bits or EC on
/// P-256, and be allowed to sign. When OpenSSL's default provider doesn't know the ciphers of an
/// old file (RC2, say), the legacy provider is loaded. Throws Failure.
Credential readCredential(ByteView pfx, std::string_view password);

/// Unloads the legacy provider again, if it was loaded.
void unloadLegacyProvider();

}  // namespace qlix::hlx
