#include "qlix_hlx/KeyDerivation.h"

#include <vector>

#include <openssl/core_names.h>
#include <openssl/params.h>

#include "qlix_hlx/ByteOrder.h"
#include "qlix_hlx/OpenSslPtr.h"

namespace qlix::hlx {
namespace {

constexpr std::string_view kSalt = "qlix-hlx key derivation, version 1";

OSSL_PARAM octets(const char* name, ByteView bytes) {
    static std::uint8_t nothing = 0;  // OpenSSL refuses a null pointer, also for no bytes
    // OpenSSL takes its input parameters through pointers that aren't const and doesn't write.
    return OSSL_PARAM_construct_octet_string(
        name, bytes.data == nullptr ? &nothing : const_cast<std::uint8_t*>(bytes.data), bytes.size);
}

std::vector<std::uint8_t> infoOf(std::string_view label, std::string_view contentId) {
    std::vector<std::uint8_t> info(label.begin(), label.end());
    info.push_back(0);
    std::uint8_t size[4];
    storeU32(size, static_cast<std::uint32_t>(contentId.size()));
    info.insert(info.end(), size, size + sizeof(size));
    info.insert(info.end(), contentId.begin(), contentId.end());
    return info;
}

}  // namespace

void hkdfSha256(ByteView key, ByteView salt, ByteView info, std::uint8_t* output,
                std::size_t size) {
    const KdfPtr kdf(require(EVP_KDF_fetch(nullptr, "HKDF", nullptr)));
    const KdfContextPtr context(require(EVP_KDF_CTX_new(kdf.get())));
    char digest[] = "SHA256";
    const OSSL_PARAM parameters[] = {
        OSSL_PARAM_construct_utf8_string(OSSL_KDF_PARAM_DIGEST, digest, 0),
        octets(OSSL_KDF_PARAM_KEY, key),
        octets(OSSL_KDF_PARAM_SALT, salt),
        octets(OSSL_KDF_PARAM_INFO, info),
        OSSL_PARAM_construct_end(),
    };
    require(EVP_KDF_derive(context.get(), output, size, parameters));
}

void deriveContentKeys(ByteView commonKey, std::string_view contentId, ContentKeys& keys) {
    if (commonKey.size < kMinCommonKeySize) fail(HLX_ERROR_COMMON_KEY_TOO_SHORT);
    if (contentId.empty()) fail(HLX_ERROR_CONTENT_ID_EMPTY);
    if (contentId.size() > kMaxContentIdSize) fail(HLX_ERROR_CONTENT_ID_TOO_LONG);
    const auto derive = [&](std::string_view label, std::uint8_t* output) {
        const std::vector<std::uint8_t> info = infoOf(label, contentId);
        hkdfSha256(commonKey, viewOf(kSalt), {info.data(), info.size()}, output, kKeySize);
    };
    derive("content key", keys.contentKey.data());
    derive("iv key", keys.ivKey.data());
    derive("key id", keys.keyId.data());
}

}  // namespace qlix::hlx
