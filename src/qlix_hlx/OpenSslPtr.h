#pragma once

#include <memory>

#include <openssl/bio.h>
#include <openssl/cms.h>
#include <openssl/evp.h>
#include <openssl/kdf.h>
#include <openssl/pkcs12.h>
#include <openssl/x509.h>

#include "qlix_hlx/Failure.h"

namespace qlix::hlx {

template <auto Free>
struct FreeWith {
    template <typename T>
    void operator()(T* object) const {
        Free(object);
    }
};

using BioPtr = std::unique_ptr<BIO, FreeWith<BIO_free_all>>;
using CipherContextPtr = std::unique_ptr<EVP_CIPHER_CTX, FreeWith<EVP_CIPHER_CTX_free>>;
using CmsPtr = std::unique_ptr<CMS_ContentInfo, FreeWith<CMS_ContentInfo_free>>;
using KdfPtr = std::unique_ptr<EVP_KDF, FreeWith<EVP_KDF_free>>;
using KdfContextPtr = std::unique_ptr<EVP_KDF_CTX, FreeWith<EVP_KDF_CTX_free>>;
using KeyPtr = std::unique_ptr<EVP_PKEY, FreeWith<EVP_PKEY_free>>;
using Pkcs12Ptr = std::unique_ptr<PKCS12, FreeWith<PKCS12_free>>;
using X509Ptr = std::unique_ptr<X509, FreeWith<X509_free>>;

struct FreeX509Stack {
    void operator()(STACK_OF(X509) * stack) const { sk_X509_pop_free(stack, X509_free); }
};
using X509StackPtr = std::unique_ptr<STACK_OF(X509), FreeX509Stack>;

/// Fails with `code` unless the call of OpenSSL answered 1 or more.
inline void require(int answer, std::uint32_t code = HLX_ERROR_CRYPTO) {
    if (answer <= 0) fail(code);
}

template <typename T>
T* require(T* pointer, std::uint32_t code = HLX_ERROR_CRYPTO) {
    if (pointer == nullptr) fail(code);
    return pointer;
}

}  // namespace qlix::hlx
