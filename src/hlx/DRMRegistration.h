#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "hlx/CSmartPtrBase.h"
#include "hlx/Secret.h"

namespace hlx {

/// Turns the certificates and credentials that the user gives for a content into handles. The
/// handles are the caller's, to keep or to give back with HLXRelease.
class DRMRegistration final : public CSmartPtrBase {
public:
    /// Throws HLXException when the library has no registration table that is new enough.
    DRMRegistration();

    /// From the bytes of one DER certificate. Throws HLXException with code 0 when they aren't
    /// one, HLXInvalidCertException when it can't be used.
    QlixHLXCertificate* certificate(const std::vector<std::uint8_t>& bytes) const;

    /// From the bytes of a PFX. Throws HLXException.
    QlixHLXCredential* credential(const SecretBytes& bytes, const std::string& password) const;
};

}  // namespace hlx
