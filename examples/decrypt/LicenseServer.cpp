#include "decrypt/LicenseServer.h"

#include <memory>
#include <stdexcept>

#include <openssl/bio.h>
#include <openssl/cms.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/x509_vfy.h>

namespace decrypt {
namespace {

template <typename T>
using Handle = std::shared_ptr<T>;

[[noreturn]] void fail(const std::string& what) { throw std::runtime_error(what); }

Handle<EVP_PKEY> readKey(const std::string& path) {
    const Handle<BIO> file(BIO_new_file(path.c_str(), "rb"), BIO_free_all);
    if (file == nullptr) fail("can't read " + path);
    Handle<EVP_PKEY> key(PEM_read_bio_PrivateKey(file.get(), nullptr, nullptr, nullptr),
                         EVP_PKEY_free);
    if (key == nullptr) fail("no private key in " + path);
    return key;
}

Handle<CMS_ContentInfo> parseMessage(const Bytes& der) {
    const std::uint8_t* at = der.data();
    Handle<CMS_ContentInfo> message(
        d2i_CMS_ContentInfo(nullptr, &at, static_cast<long>(der.size())), CMS_ContentInfo_free);
    if (message == nullptr) fail("the metadata is no CMS message");
    return message;
}

Bytes contentOf(BIO* memory) {
    char* data = nullptr;
    const long size = BIO_get_mem_data(memory, &data);
    return Bytes(data, data + size);
}

Bytes openEnvelope(const Bytes& metadata, const std::string& keyFile) {
    const Handle<CMS_ContentInfo> message = parseMessage(metadata);
    // Only this kind is sure to be refused when a bit of it has changed.
    if (OBJ_obj2nid(CMS_get0_type(message.get())) != NID_id_smime_ct_authEnvelopedData) {
        fail("the metadata isn't an authenticated envelope");
    }
    const Handle<BIO> output(BIO_new(BIO_s_mem()), BIO_free_all);
    if (CMS_decrypt(message.get(), readKey(keyFile).get(), nullptr, nullptr, output.get(),
                    CMS_BINARY) != 1) {
        fail("the metadata doesn't open with this key");
    }
    return contentOf(output.get());
}

Bytes checkSignature(const Bytes& signedData, const std::string& authorityFile) {
    const Handle<CMS_ContentInfo> message = parseMessage(signedData);
    const Handle<X509_STORE> store(X509_STORE_new(), X509_STORE_free);
    unsigned flags = CMS_BINARY;
    if (authorityFile.empty()) {
        flags |= CMS_NO_SIGNER_CERT_VERIFY;
    } else if (X509_STORE_load_file(store.get(), authorityFile.c_str()) != 1) {
        fail("can't read " + authorityFile);
    }
    X509_STORE_set_purpose(store.get(), X509_PURPOSE_ANY);
    const Handle<BIO> output(BIO_new(BIO_s_mem()), BIO_free_all);
    if (CMS_verify(message.get(), nullptr, store.get(), nullptr, output.get(), flags) != 1) {
        fail("the metadata isn't signed as it should be");
    }
    return contentOf(output.get());
}

/// Walks DER values of one run of bytes.
class DerReader {
public:
    explicit DerReader(Bytes bytes) : bytes_(std::move(bytes)) {}

    Bytes take(unsigned tag) {
        if (byte() != tag) fail("the record isn't as it should be");
        std::size_t size = byte();
        if (size >= 0x80) {
            std::size_t count = size - 0x80;
            if (count > 4) fail("the record isn't as it should be");
            for (size = 0; count > 0; --count) size = size * 256 + byte();
        }
        if (size > bytes_.size() - at_) fail("the record is cut off");
        const auto start = bytes_.begin() + static_cast<std::ptrdiff_t>(at_);
        at_ += size;
        return Bytes(start, start + static_cast<std::ptrdiff_t>(size));
    }

private:
    std::size_t byte() {
        if (at_ == bytes_.size()) fail("the record is cut off");
        return bytes_[at_++];
    }

    Bytes bytes_;
    std::size_t at_ = 0;
};

constexpr unsigned kInteger = 0x02;
constexpr unsigned kOctetString = 0x04;
constexpr unsigned kSequence = 0x30;

std::string textOf(const Bytes& bytes) { return std::string(bytes.begin(), bytes.end()); }

License parseRecord(const Bytes& der) {
    DerReader fields(DerReader(der).take(kSequence));
    if (fields.take(kInteger) != Bytes{1}) fail("the record has an unknown version");
    License license;
    license.contentId = textOf(fields.take(kOctetString));
    fields.take(kOctetString);  // key id
    license.serverUrl = textOf(fields.take(kOctetString));
    fields.take(kOctetString);  // fingerprint of the transport certificate
    license.policy = DerReader(fields.take(kSequence)).take(kOctetString);
    fields.take(kSequence);  // what is encrypted: the tags tell that themselves
    license.contentKey = fields.take(kOctetString);
    if (license.contentKey.size() != 16) fail("the content key hasn't 16 bytes");
    return license;
}

}  // namespace

License openMetadata(const Bytes& metadata, const std::string& keyFile,
                     const std::string& authorityFile) {
    return parseRecord(checkSignature(openEnvelope(metadata, keyFile), authorityFile));
}

Bytes decodeBase64(const std::string& text) {
    Bytes bytes(text.size() / 4 * 3 + 3);
    const int size =
        EVP_DecodeBlock(bytes.data(), reinterpret_cast<const unsigned char*>(text.data()),
                        static_cast<int>(text.size()));
    if (size < 0) fail("the metadata's text is no base64");
    // The fill counts as bytes of zero.
    const std::size_t padding = text.size() - text.find_last_not_of('=') - 1;
    bytes.resize(static_cast<std::size_t>(size) - padding);
    return bytes;
}

}  // namespace decrypt
