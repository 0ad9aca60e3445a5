#include "hlx/DRMRegistration.h"

#include "hlx/Sizes.h"
#include "hlx/Tables.h"

namespace hlx {

// The library has one registration of its own, which null stands for.
DRMRegistration::DRMRegistration() { registrationTable(); }

QlixHLXCertificate* DRMRegistration::certificate(const std::vector<std::uint8_t>& bytes) const {
    QlixHLXCertificate* certificate = nullptr;
    try {
        checkResult(registrationTable().certificateFromBytes(
            handleAs<QlixHLXRegistration>(), bytes.data(), sizeOf(bytes), &certificate));
    } catch (const HLXInvalidCertException& refused) {
        if (refused.detail() == HLX_CERT_NOT_IDENTIFIED) throw HLXException(kNotIdentifiedCode);
        throw;
    }
    return certificate;
}

QlixHLXCredential* DRMRegistration::credential(const SecretBytes& bytes,
                                               const std::string& password) const {
    QlixHLXCredential* credential = nullptr;
    checkResult(registrationTable().credentialFromBytes(
        handleAs<QlixHLXRegistration>(), bytes.data(), sizeOf(bytes), password.data(),
        sizeOf(password), &credential));
    return credential;
}

}  // namespace hlx
