#pragma once

#include <array>
#include <cstdint>

#include "qlix_hlx/ByteView.h"
#include "qlix_hlx/OpenSslPtr.h"
#include "qlix_hlx/qlix_hlx.h"

namespace qlix::hlx {

/// Reads exactly one DER certificate to which a key can be sent: RSA of at least 2048 bits or EC on
/// P-256, with a key usage, if it has one, that allows key encipherment (RSA) or key agreement
/// (EC). Its dates aren't looked at. Throws Failure with a detail of HLX_CERT_....
X509Ptr readCertificate(ByteView bytes);

/// Throws Failure unless the key of `certificate` is one of those that `readCertificate` takes.
void checkKeyStrength(X509* certificate);

/// Throws Failure unless now lies within the validity of `certificate`.
void checkValidNow(const X509* certificate);

/// Throws Failure for a certificate whose dates can't be read.
HLXCertificateDates datesOf(const X509* certificate);

/// SHA-256 of the certificate's DER bytes.
std::array<std::uint8_t, 32> fingerprintOf(const X509* certificate);

}  // namespace qlix::hlx
