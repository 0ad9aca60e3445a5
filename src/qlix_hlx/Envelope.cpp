#include "qlix_hlx/Envelope.h"

#include <limits>

#include <openssl/ec.h>
#include <openssl/rsa.h>

namespace qlix::hlx {
namespace {

/// Puts the content into a message and makes its digests, signatures or ciphertext.
///
/// In place of CMS_final, which copies the content through a buffer that it frees without wiping.
void complete(CMS_ContentInfo* message, const SecretBytes& content) {
    if (content.size() > static_cast<std::size_t>(std::numeric_limits<int>::max())) {
        fail(HLX_ERROR_CRYPTO);
    }
    const BioPtr chain(require(CMS_dataInit(message, nullptr)));
    const int size = static_cast<int>(content.size());
    if (BIO_write(chain.get(), content.data(), size) != size) fail(HLX_ERROR_CRYPTO);
    require(BIO_flush(chain.get()));
    require(CMS_dataFinal(message, chain.get()));
}

SecretBytes derOf(const CMS_ContentInfo* message) {
    const int size = i2d_CMS_ContentInfo(message, nullptr);
    require(size);
    SecretBytes bytes(static_cast<std::size_t>(size));
    std::uint8_t* at = bytes.data();
    require(i2d_CMS_ContentInfo(message, &at));
    return bytes;
}

/// Wipes the copy of the content that OpenSSL keeps inside a message and frees without wiping.
class ContentWiper {
public:
    explicit ContentWiper(CMS_ContentInfo* message) : message_(message) {}
    ContentWiper(const ContentWiper&) = delete;
    ContentWiper& operator=(const ContentWiper&) = delete;
    ~ContentWiper() {
        ASN1_OCTET_STRING** content = CMS_get0_content(message_);
        if (content == nullptr || *content == nullptr || (*content)->data == nullptr) return;
        OPENSSL_cleanse((*content)->data, static_cast<std::size_t>((*content)->length));
    }

private:
    CMS_ContentInfo* message_;
};

/// Chooses how the content key travels to `recipient`; OpenSSL's own choices rest on SHA-1.
void chooseKeyTransport(CMS_RecipientInfo* recipient) {
    EVP_PKEY_CTX* context = require(CMS_RecipientInfo_get0_pkey_ctx(recipient));
    if (CMS_RecipientInfo_type(recipient) == CMS_RECIPINFO_TRANS) {
        require(EVP_PKEY_CTX_set_rsa_padding(context, RSA_PKCS1_OAEP_PADDING));
        require(EVP_PKEY_CTX_set_rsa_oaep_md(context, EVP_sha256()));
        require(EVP_PKEY_CTX_set_rsa_mgf1_md(context, EVP_sha256()));
    } else {
        require(EVP_PKEY_CTX_set_ecdh_kdf_md(context, EVP_sha256()));
    }
}

}  // namespace

SecretBytes signRecord(const SecretBytes& content, const Credential& signer) {
    constexpr unsigned kFlags = CMS_BINARY | CMS_PARTIAL | CMS_NOSMIMECAP;
    const CmsPtr message(require(CMS_sign(nullptr, nullptr, nullptr, nullptr, kFlags)));
    const ContentWiper wiper(message.get());
    require(CMS_add1_signer(message.get(), signer.certificate.get(), signer.key.get(), EVP_sha256(),
                            kFlags));
    const STACK_OF(X509)* chain = signer.chain.get();
    for (int i = 0; chain != nullptr && i < sk_X509_num(chain); ++i) {
        require(CMS_add1_cert(message.get(), sk_X509_value(chain, i)));
    }
    complete(message.get(), content);
    return derOf(message.get());
}

SecretBytes sealFor(X509* recipient, const SecretBytes& content) {
    const CmsPtr message(require(CMS_AuthEnvelopedData_create(EVP_aes_256_gcm())));
    require(CMS_set_detached(message.get(), 0));
    chooseKeyTransport(
        require(CMS_add1_recipient_cert(message.get(), recipient, CMS_BINARY | CMS_KEY_PARAM)));
    complete(message.get(), content);
    return derOf(message.get());
}

}  // namespace qlix::hlx
