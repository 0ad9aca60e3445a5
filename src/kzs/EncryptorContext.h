#pragma once

#include "kzs/IEncryptorContext.h"

namespace torvo::kzs {

/// The context of a run.
///
/// The handles are made once for the process, by the first context; the certificates of a later one
/// are not looked at, it gets the handles of the first. They are never given back.
class EncryptorContext final : public IEncryptorContext {
public:
    /// `extraCertificates` points to the bytes of `extraCertificateCount` certificates. The second
    /// credential is left out when it has neither bytes nor a password.
    ///
    /// Throws hlx::HLXException when the library refuses a certificate or credential. No later
    /// context makes up for that: the process then stays without the handles that are missing.
    EncryptorContext(std::uint32_t kind, std::string contentId, hlx::SecretBytes commonKey,
                     std::string licenseServerUrl, const Bytes& transportCertificate,
                     const Bytes& licenseServerCertificate,
                     const hlx::SecretBytes& packagerCredential,
                     const std::string& packagerPassword, Bytes policy,
                     const hlx::EncryptionFlags& encryptionFlags,
                     const hlx::SecretBytes& secondCredential, const std::string& secondPassword,
                     std::int32_t extraCertificateCount, const Bytes* extraCertificates);

    /// For when the encryptor is made: nothing reads the key again.
    void wipeCommonKey() { commonKey_ = hlx::SecretBytes(); }

    std::uint32_t kind() const override { return kind_; }
    const std::string& contentId() const override { return contentId_; }
    const hlx::SecretBytes& commonKey() const override { return commonKey_; }
    const std::string& licenseServerUrl() const override { return licenseServerUrl_; }
    QlixHLXCertificate* transportCertificate() const override;
    QlixHLXCertificate* licenseServerCertificate() const override;
    QlixHLXCredential* packagerCredential() const override;
    bool certificateStaysValid(QlixHLXCertificate* certificate,
                               std::string& dateText) const override;
    const Bytes& policy() const override { return policy_; }
    const hlx::EncryptionFlags& encryptionFlags() const override { return encryptionFlags_; }
    QlixHLXCredential* const& secondCredential() const override;
    std::int32_t extraCertificateCount() const override { return extraCertificateCount_; }
    QlixHLXCertificate* const* extraCertificates() const override;
    DigestList& digestList() override { return digestList_; }
    TextList& textList() override { return textList_; }
    std::uint32_t digestWord() const override { return digestWord_; }

private:
    std::uint32_t kind_;
    std::string contentId_;
    hlx::SecretBytes commonKey_;
    std::string licenseServerUrl_;
    Bytes policy_;
    hlx::EncryptionFlags encryptionFlags_;
    std::int32_t extraCertificateCount_;
    DigestList digestList_;
    TextList textList_;
    std::uint32_t digestWord_ = 0;
};

}  // namespace torvo::kzs
