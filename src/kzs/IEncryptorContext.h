#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "hlx/HLXEncryptor.h"
#include "hlx/Secret.h"

namespace torvo::kzs {

/// The protection settings of a run and the handles that the encryption library made of its
/// certificates. The handles belong to the process and are valid until it ends.
class IEncryptorContext {
public:
    using Bytes = std::vector<std::uint8_t>;
    /// Digests that a streaming presentation names.
    using DigestList = std::vector<Bytes>;
    /// Texts that it names, in fours: the first always, the others where they aren't empty.
    using TextList = std::vector<std::array<std::string, 4>>;

    /// Which policy the run gets: 0 or 1.
    virtual std::uint32_t kind() const = 0;
    virtual const std::string& contentId() const = 0;
    virtual const hlx::SecretBytes& commonKey() const = 0;
    virtual const std::string& licenseServerUrl() const = 0;
    virtual QlixHLXCertificate* transportCertificate() const = 0;
    virtual QlixHLXCertificate* licenseServerCertificate() const = 0;
    virtual QlixHLXCredential* packagerCredential() const = 0;
    /// True if `certificate` is valid for 30 more days; exactly 30 count. Writes the moment at
    /// which it expires to `dateText`: "05-Mar-2031 14:00:00 GMT". Throws hlx::HLXException.
    virtual bool certificateStaysValid(QlixHLXCertificate* certificate,
                                       std::string& dateText) const = 0;
    virtual const Bytes& policy() const = 0;
    virtual const hlx::EncryptionFlags& encryptionFlags() const = 0;
    /// Refers to null when none was given.
    virtual QlixHLXCredential* const& secondCredential() const = 0;
    virtual std::int32_t extraCertificateCount() const = 0;
    /// Null when there are none.
    virtual QlixHLXCertificate* const* extraCertificates() const = 0;
    /// Lists that the context only keeps, for others to fill.
    virtual DigestList& digestList() = 0;
    virtual TextList& textList() = 0;
    /// The word that goes with each digest.
    virtual std::uint32_t digestWord() const = 0;

    virtual ~IEncryptorContext() = default;
};

}  // namespace torvo::kzs
