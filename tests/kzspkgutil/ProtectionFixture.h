#pragma once

#include <memory>
#include <string>

#include "hlx/HLXLibrary.h"
#include "kzs/IEncryptorContext.h"
#include "kzspkgutil/EncryptedPolicyFactory.h"
#include "kzspkgutil/model/PackagerContext.h"
#include "support/Bytes.h"
#include "support/TestLicenseServer.h"

namespace torvo::kzspkgutil::test {

/// The content key of the context below, by openssl kdf.
kz::test::Bytes contentKey();

/// An encryption context of P-256 certificates with handles of its own, where the real one has
/// those of the process.
class FixedEncryptorContext final : public kzs::IEncryptorContext {
public:
    FixedEncryptorContext();
    FixedEncryptorContext(const FixedEncryptorContext&) = delete;
    FixedEncryptorContext& operator=(const FixedEncryptorContext&) = delete;
    ~FixedEncryptorContext() override;

    std::uint32_t kind() const override { return contextKind; }
    const std::string& contentId() const override { return id_; }
    const hlx::SecretBytes& commonKey() const override { return key_; }
    const std::string& licenseServerUrl() const override { return url_; }
    QlixHLXCertificate* transportCertificate() const override { return transport_; }
    QlixHLXCertificate* licenseServerCertificate() const override { return server_; }
    QlixHLXCredential* packagerCredential() const override { return packager_; }
    bool certificateStaysValid(QlixHLXCertificate*, std::string&) const override { return true; }
    const Bytes& policy() const override { return policy_; }
    const hlx::EncryptionFlags& encryptionFlags() const override { return flags; }
    QlixHLXCredential* const& secondCredential() const override { return second; }
    std::int32_t extraCertificateCount() const override { return second == nullptr ? 0 : 1; }
    QlixHLXCertificate* const* extraCertificates() const override { return &transport_; }
    DigestList& digestList() override { return digests_; }
    TextList& textList() override { return texts_; }
    std::uint32_t digestWord() const override { return 9; }

    /// What the license server reads in metadata made for this context.
    kz::test::OpenedMetadata open(const Blob& metadata) const;

    /// SHA-256 of the transport certificate.
    kz::test::Bytes transportFingerprint() const { return transportFingerprint_; }

    std::uint32_t contextKind = 0;
    hlx::EncryptionFlags flags = {1, 1, 1, 2, 0};
    QlixHLXCredential* second = nullptr;  ///< with it there is one extra certificate

private:
    std::string id_ = "movie7";
    std::string url_ = "https://license.example/";
    hlx::SecretBytes key_;
    Bytes policy_ = {'p'};
    kz::test::Bytes serverDer_;
    kz::test::Bytes transportFingerprint_;
    QlixHLXCertificate* transport_ = nullptr;
    QlixHLXCertificate* server_ = nullptr;
    QlixHLXCredential* packager_ = nullptr;
    DigestList digests_;
    TextList texts_;
};

}  // namespace torvo::kzspkgutil::test
