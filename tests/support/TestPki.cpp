#include "support/TestPki.h"

#include <map>
#include <stdexcept>
#include <utility>

#include <openssl/asn1t.h>
#include <openssl/ec.h>
#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/pkcs12.h>
#include <openssl/provider.h>
#include <openssl/rsa.h>
#include <openssl/x509v3.h>

namespace kz::test {
namespace {

constexpr int kAuthorityKeyNumber = 1000;

template <typename T>
T* must(T* pointer) {
    if (pointer == nullptr) throw std::runtime_error("OpenSSL failed in a test fixture");
    return pointer;
}

void must(int answer) {
    if (answer <= 0) throw std::runtime_error("OpenSSL failed in a test fixture");
}

using X509Shared = std::shared_ptr<X509>;

X509Shared sharedX509(X509* certificate) { return X509Shared(must(certificate), X509_free); }

EVP_PKEY* generate(KeyKind kind) {
    switch (kind) {
        case KeyKind::rsa2048:
            return EVP_RSA_gen(2048);
        case KeyKind::rsa1024:
            return EVP_RSA_gen(1024);
        case KeyKind::p256:
            return EVP_EC_gen("P-256");
        case KeyKind::p384:
            return EVP_EC_gen("P-384");
    }
    return nullptr;
}

void setName(X509_NAME* name, const std::string& commonName) {
    must(X509_NAME_add_entry_by_txt(name, "CN", MBSTRING_ASC,
                                    reinterpret_cast<const unsigned char*>(commonName.c_str()), -1,
                                    -1, 0));
}

void addExtension(X509* certificate, int nid, const std::string& value) {
    X509_EXTENSION* extension = must(X509V3_EXT_conf_nid(nullptr, nullptr, nid, value.c_str()));
    const int added = X509_add_ext(certificate, extension, -1);
    X509_EXTENSION_free(extension);
    must(added);
}

X509Shared startCertificate(const std::string& name, EVP_PKEY* key, long from, long until) {
    static long serial = 0;
    X509Shared certificate = sharedX509(X509_new());
    must(X509_set_version(certificate.get(), X509_VERSION_3));
    must(ASN1_INTEGER_set(X509_get_serialNumber(certificate.get()), ++serial));
    must(X509_gmtime_adj(X509_getm_notBefore(certificate.get()), from));
    must(X509_gmtime_adj(X509_getm_notAfter(certificate.get()), until));
    must(X509_set_pubkey(certificate.get(), key));
    setName(X509_get_subject_name(certificate.get()), name);
    setName(X509_get_issuer_name(certificate.get()), "kz test authority");
    return certificate;
}

X509Shared finishCertificate(X509Shared certificate) {
    must(X509_sign(certificate.get(), testKey(KeyKind::p256, kAuthorityKeyNumber).get(),
                   EVP_sha256()));
    return certificate;
}

template <typename T>
Bytes derOf(int (*write)(T*, unsigned char**), T* object) {
    unsigned char* der = nullptr;
    const int size = write(object, &der);
    must(size);
    const Bytes bytes = bytesOf(der, static_cast<std::size_t>(size));
    OPENSSL_free(der);
    return bytes;
}

Bytes certificateDer(const X509* certificate) { return derOf<const X509>(i2d_X509, certificate); }

X509Shared parseCertificate(const Bytes& der) {
    const unsigned char* at = der.data();
    return sharedX509(d2i_X509(nullptr, &at, static_cast<long>(der.size())));
}

/// A library context with the legacy provider, kept apart from the one that is under test.
OSSL_LIB_CTX* legacyContext() {
    struct Holder {
        OSSL_LIB_CTX* context = must(OSSL_LIB_CTX_new());
        OSSL_PROVIDER* base = must(OSSL_PROVIDER_load(context, "default"));
        OSSL_PROVIDER* legacy = must(OSSL_PROVIDER_load(context, "legacy"));
        Holder() = default;
        Holder(const Holder&) = delete;
        Holder& operator=(const Holder&) = delete;
        ~Holder() {
            OSSL_PROVIDER_unload(legacy);
            OSSL_PROVIDER_unload(base);
            OSSL_LIB_CTX_free(context);
        }
    };
    static Holder holder;
    return holder.context;
}

/// Puts other rounds into the PBES2 parameters of an algorithm.
void claimRounds(X509_ALGOR* algorithm, long rounds) {
    auto* scheme = static_cast<PBE2PARAM*>(
        must(ASN1_TYPE_unpack_sequence(ASN1_ITEM_rptr(PBE2PARAM), algorithm->parameter)));
    auto* derivation = static_cast<PBKDF2PARAM*>(
        must(ASN1_TYPE_unpack_sequence(ASN1_ITEM_rptr(PBKDF2PARAM), scheme->keyfunc->parameter)));
    must(ASN1_INTEGER_set(derivation->iter, rounds));
    must(ASN1_TYPE_pack_sequence(ASN1_ITEM_rptr(PBKDF2PARAM), derivation,
                                 &scheme->keyfunc->parameter));
    must(ASN1_TYPE_pack_sequence(ASN1_ITEM_rptr(PBE2PARAM), scheme, &algorithm->parameter));
    PBKDF2PARAM_free(derivation);
    PBE2PARAM_free(scheme);
}

void claimForKey(PKCS12_SAFEBAG* bag, const PfxSpec& spec) {
    X509_ALGOR* algorithm = nullptr;
    X509_SIG_getm(const_cast<X509_SIG*>(PKCS12_SAFEBAG_get0_pkcs8(bag)), &algorithm, nullptr);
    if (spec.claimedKeyRounds != 0) claimRounds(algorithm, spec.claimedKeyRounds);
    if (spec.claimedKeyAlgorithm.empty()) return;
    const unsigned char* at = spec.claimedKeyAlgorithm.data();
    X509_ALGOR* other =
        must(d2i_X509_ALGOR(nullptr, &at, static_cast<long>(spec.claimedKeyAlgorithm.size())));
    must(X509_ALGOR_copy(algorithm, other));
    X509_ALGOR_free(other);
}

/// A bag that holds `count` copies of the bag.
PKCS12_SAFEBAG* bagOf(const PKCS12_SAFEBAG* bag, unsigned count) {
    const Bytes one = derOf<const PKCS12_SAFEBAG>(i2d_PKCS12_SAFEBAG, bag);
    Bytes copies;
    for (unsigned i = 0; i < count; ++i) copies = copies + one;
    const Bytes whole = der(0x30, hex("060b 2a864886f70d010c0a0106"), der(0xA0, der(0x30, copies)));
    const unsigned char* at = whole.data();
    return must(d2i_PKCS12_SAFEBAG(nullptr, &at, static_cast<long>(whole.size())));
}

/// Puts a bag with copies of the only bag in its place.
void nest(STACK_OF(PKCS12_SAFEBAG) * bags, unsigned count) {
    PKCS12_SAFEBAG* const bare = sk_PKCS12_SAFEBAG_value(bags, 0);
    must(sk_PKCS12_SAFEBAG_set(bags, 0, bagOf(bare, count)));
    PKCS12_SAFEBAG_free(bare);
}

int cipherNid(PfxCipher cipher) {
    switch (cipher) {
        case PfxCipher::aes256:
            return NID_aes_256_cbc;
        case PfxCipher::tripleDes:
            return NID_pbe_WithSHA1And3_Key_TripleDES_CBC;
        case PfxCipher::rc2:
            return NID_pbe_WithSHA1And40BitRC2_CBC;
    }
    return 0;
}

}  // namespace

TestKey testKey(KeyKind kind, int number) {
    static std::map<std::pair<KeyKind, int>, TestKey> keys;
    TestKey& key = keys[{kind, number}];
    if (key == nullptr) key = TestKey(must(generate(kind)), EVP_PKEY_free);
    return key;
}

Bytes makeCertificate(const CertificateSpec& spec) {
    const TestKey key = testKey(spec.key, spec.keyNumber);
    X509Shared certificate =
        startCertificate(spec.name, key.get(), spec.validFromSeconds, spec.validUntilSeconds);
    if (!spec.keyUsage.empty()) {
        addExtension(certificate.get(), NID_key_usage, "critical," + spec.keyUsage);
    }
    return certificateDer(finishCertificate(certificate).get());
}

Bytes authorityCertificate() {
    const TestKey key = testKey(KeyKind::p256, kAuthorityKeyNumber);
    X509Shared certificate =
        startCertificate("kz test authority", key.get(), -3600, 4000L * 24 * 3600);
    addExtension(certificate.get(), NID_basic_constraints, "critical,CA:TRUE");
    addExtension(certificate.get(), NID_key_usage, "critical,keyCertSign,cRLSign");
    return certificateDer(finishCertificate(certificate).get());
}

Bytes makePfx(const TestKey& key, const Bytes& certificate, const PfxSpec& spec) {
    const X509Shared parsed = parseCertificate(certificate);
    // PKCS12_create refuses a pair that doesn't belong together, hence the parts.
    STACK_OF(PKCS12_SAFEBAG)* certificateBags = nullptr;
    STACK_OF(PKCS12_SAFEBAG)* keyBags = nullptr;
    STACK_OF(PKCS7)* safes = nullptr;
    const int nid = cipherNid(spec.cipher);
    const char* password = spec.password.c_str();
    OSSL_LIB_CTX* context = legacyContext();
    if (spec.withCertificate) {
        must(PKCS12_add_cert(&certificateBags, parsed.get()));
        for (const Bytes& further : spec.chain) {
            must(PKCS12_add_cert(&certificateBags, parseCertificate(further).get()));
        }
        must(PKCS12_add_safe_ex(&safes, certificateBags, nid, PKCS12_DEFAULT_ITER, password,
                                context, nullptr));
        if (spec.claimedCertificateRounds != 0) {
            claimRounds(sk_PKCS7_value(safes, 0)->d.encrypted->enc_data->algorithm,
                        spec.claimedCertificateRounds);
        }
    }
    if (spec.withKey) {
        must(PKCS12_add_key_ex(&keyBags, key.get(), 0, PKCS12_DEFAULT_ITER, nid, password, context,
                               nullptr));
        claimForKey(sk_PKCS12_SAFEBAG_value(keyBags, 0), spec);
        if (spec.nestedKeys > 0) nest(keyBags, spec.nestedKeys);
        must(spec.keyInEncryptedPart ? PKCS12_add_safe_ex(&safes, keyBags, nid, PKCS12_DEFAULT_ITER,
                                                          password, context, nullptr)
                                     : PKCS12_add_safe(&safes, keyBags, -1, 0, nullptr));
    }
    const std::shared_ptr<PKCS12> pfx(must(PKCS12_add_safes_ex(safes, 0, context, nullptr)),
                                      PKCS12_free);
    sk_PKCS12_SAFEBAG_pop_free(certificateBags, PKCS12_SAFEBAG_free);
    sk_PKCS12_SAFEBAG_pop_free(keyBags, PKCS12_SAFEBAG_free);
    sk_PKCS7_pop_free(safes, PKCS7_free);
    must(PKCS12_set_mac(pfx.get(), password, -1, nullptr, 0, PKCS12_DEFAULT_ITER, EVP_sha256()));
    return derOf<const PKCS12>(i2d_PKCS12, pfx.get());
}

Bytes privateKeyBytes(const TestKey& key) {
    return derOf<const EVP_PKEY>(i2d_PrivateKey, key.get());
}

}  // namespace kz::test
