#include "support/TestLicenseServer.h"

#include <memory>

#include <openssl/bio.h>
#include <openssl/cms.h>
#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/x509.h>

namespace kz::test {
namespace {

template <typename T>
using Handle = std::shared_ptr<T>;

[[noreturn]] void refuse(const char* what) {
    ERR_clear_error();
    throw MetadataRefused(what);
}

Handle<CMS_ContentInfo> parseCms(const Bytes& der) {
    const unsigned char* at = der.data();
    Handle<CMS_ContentInfo> message(
        d2i_CMS_ContentInfo(nullptr, &at, static_cast<long>(der.size())), CMS_ContentInfo_free);
    if (message == nullptr) refuse("not a CMS message");
    return message;
}

Handle<X509> parseX509(const Bytes& der) {
    const unsigned char* at = der.data();
    return {d2i_X509(nullptr, &at, static_cast<long>(der.size())), X509_free};
}

Bytes contentOf(BIO* output) {
    char* data = nullptr;
    const long size = BIO_get_mem_data(output, &data);
    return bytesOf(data, static_cast<std::size_t>(size));
}

Bytes verify(const Bytes& signedData, X509_STORE* store, unsigned flags) {
    const auto message = parseCms(signedData);
    const Handle<BIO> output(BIO_new(BIO_s_mem()), BIO_free_all);
    if (CMS_verify(message.get(), nullptr, store, nullptr, output.get(), CMS_BINARY | flags) != 1) {
        refuse("bad signature");
    }
    return contentOf(output.get());
}

/// Walks DER values; only definite lengths.
class DerReader {
public:
    explicit DerReader(Bytes bytes) : bytes_(std::move(bytes)) {}

    bool isAtEnd() const { return at_ == bytes_.size(); }
    bool isNext(unsigned tag) const { return !isAtEnd() && bytes_[at_] == tag; }

    Bytes take(unsigned tag) {
        if (!isNext(tag)) refuse("unexpected tag in the record");
        ++at_;
        std::size_t size = byte();
        if (size >= 0x80) {
            std::size_t count = size - 0x80;
            for (size = 0; count > 0; --count) size = size * 256 + byte();
        }
        const Bytes content = bytes_.slice(at_, size);
        at_ += size;
        return content;
    }
    unsigned long takeInteger() {
        unsigned long value = 0;
        for (const std::uint8_t part : take(0x02)) value = value * 256 + part;
        return value;
    }

private:
    std::size_t byte() {
        if (isAtEnd()) refuse("short record");
        return bytes_[at_++];
    }

    Bytes bytes_;
    std::size_t at_ = 0;
};

std::vector<Bytes> octetList(const Bytes& content) {
    std::vector<Bytes> list;
    DerReader reader(content);
    while (!reader.isAtEnd()) list.push_back(reader.take(0x04));
    return list;
}

OpenedMetadata parseRecord(const Bytes& der) {
    DerReader outer(der);
    DerReader fields(outer.take(0x30));
    if (!outer.isAtEnd() || fields.takeInteger() != 1) refuse("unknown record");
    OpenedMetadata opened;
    opened.contentId = fields.take(0x04).str();
    opened.keyId = fields.take(0x04);
    opened.serverUrl = fields.take(0x04).str();
    opened.transportFingerprint = fields.take(0x04);
    opened.policies = octetList(fields.take(0x30));
    DerReader flags(fields.take(0x30));
    while (!flags.isAtEnd()) opened.flags.push_back(flags.takeInteger());
    opened.contentKey = fields.take(0x04);
    if (fields.isNext(0xA0)) opened.extras = octetList(fields.take(0xA0));
    if (!fields.isAtEnd()) refuse("bytes behind the record");
    return opened;
}

}  // namespace

OpenedMetadata openMetadata(const Bytes& metadata, const TestKey& serverKey,
                            const Bytes& serverCertificate) {
    const auto envelope = parseCms(metadata);
    if (OBJ_obj2nid(CMS_get0_type(envelope.get())) != NID_id_smime_ct_authEnvelopedData) {
        refuse("not an authenticated envelope");
    }
    const auto certificate = parseX509(serverCertificate);
    const Handle<BIO> output(BIO_new(BIO_s_mem()), BIO_free_all);
    if (CMS_decrypt(envelope.get(), serverKey.get(), certificate.get(), nullptr, output.get(),
                    CMS_BINARY) != 1) {
        refuse("the envelope doesn't open");
    }
    const Handle<X509_STORE> store(X509_STORE_new(), X509_STORE_free);
    X509_STORE_add_cert(store.get(), parseX509(authorityCertificate()).get());
    X509_STORE_set_purpose(store.get(), X509_PURPOSE_ANY);
    return parseRecord(verify(contentOf(output.get()), store.get(), 0));
}

Bytes verifiedContent(const Bytes& signedData) {
    return verify(signedData, nullptr, CMS_NO_SIGNER_CERT_VERIFY);
}

Bytes decryptSample(const Bytes& encrypted, const Bytes& key, const Bytes& iv) {
    const Handle<EVP_CIPHER_CTX> context(EVP_CIPHER_CTX_new(), EVP_CIPHER_CTX_free);
    Bytes clear(encrypted.size() + 16);
    int size = 0;
    int rest = 0;
    const bool opened =
        EVP_DecryptInit_ex(context.get(), EVP_aes_128_cbc(), nullptr, key.data(), iv.data()) == 1 &&
        EVP_DecryptUpdate(context.get(), clear.data(), &size, encrypted.data(),
                          static_cast<int>(encrypted.size())) == 1 &&
        EVP_DecryptFinal_ex(context.get(), clear.data() + size, &rest) == 1;
    if (!opened) refuse("the sample doesn't decrypt");
    return clear.cutTo(static_cast<std::size_t>(size + rest));
}

Bytes sha256(const Bytes& bytes) {
    Bytes digest(32);
    unsigned size = 0;
    EVP_Digest(bytes.data(), bytes.size(), digest.data(), &size, EVP_sha256(), nullptr);
    return digest;
}

}  // namespace kz::test
