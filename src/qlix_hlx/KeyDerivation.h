#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "qlix_hlx/ByteView.h"
#include "qlix_hlx/Secret.h"

namespace qlix::hlx {

constexpr std::size_t kKeySize = 16;
constexpr std::size_t kMinCommonKeySize = 16;
constexpr std::size_t kMaxContentIdSize = 512;

/// The three values that one content id gets from a common key.
struct ContentKeys {
    SecretArray<kKeySize> contentKey;            ///< encrypts the samples
    SecretArray<kKeySize> ivKey;                 ///< makes the IVs of the samples
    std::array<std::uint8_t, kKeySize> keyId{};  ///< public: names the content key
};

/// HKDF with SHA-256, extract and expand (RFC 5869). Fills `size` bytes of `output`.
/// Throws Failure.
void hkdfSha256(ByteView key, ByteView salt, ByteView info, std::uint8_t* output, std::size_t size);

/// Fills `keys`, each by an HKDF of its own:
///
///   key material  the common key
///   salt          "qlix-hlx key derivation, version 1"
///   info          a label, a zero byte, the size of the content id (32 bits), the content id
///
/// The labels are "content key", "iv key" and "key id".
/// Throws Failure for a common key of fewer than 16 bytes and a content id that is empty or has
/// more than 512 bytes, the most that goes through OpenSSL's HKDF with room for the label.
void deriveContentKeys(ByteView commonKey, std::string_view contentId, ContentKeys& keys);

}  // namespace qlix::hlx
