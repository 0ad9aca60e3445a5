#include "decrypt/TagDecryption.h"

#include <memory>
#include <stdexcept>

#include <openssl/evp.h>

namespace decrypt {
namespace {

constexpr std::size_t kTagHeader = 11;
constexpr std::size_t kSizeWord = 4;
constexpr unsigned kEncryptedBit = 0x20;
/// Filter count 1, name "SE", 17 bytes of parameters, of which the first says "encrypted".
const Bytes kFilterHeader = {1, 'S', 'E', 0, 0, 0, 17, 0x80};
constexpr std::size_t kIvSize = 16;

/// Bytes of the codec header, which stay clear, by the tag's type and first body byte.
std::size_t codecHeaderSize(const Bytes& tag) {
    const unsigned first = tag.at(kTagHeader);
    switch (tag[0] & 0x1F) {
        case 9:
            return (first & 0x0F) == 7 ? 5 : 1;
        case 8: {
            const unsigned format = first & 0xF0;
            return format == 0xA0 || format == 0xD0 ? 2 : 1;
        }
        default:
            return 0;
    }
}

Bytes decryptSample(const std::uint8_t* data, std::size_t size, const Bytes& key,
                    const std::uint8_t* iv) {
    const std::shared_ptr<EVP_CIPHER_CTX> context(EVP_CIPHER_CTX_new(), EVP_CIPHER_CTX_free);
    Bytes clear(size + kIvSize);
    int written = 0;
    int last = 0;
    if (EVP_DecryptInit_ex(context.get(), EVP_aes_128_cbc(), nullptr, key.data(), iv) != 1 ||
        EVP_DecryptUpdate(context.get(), clear.data(), &written, data, static_cast<int>(size)) !=
            1 ||
        EVP_DecryptFinal_ex(context.get(), clear.data() + written, &last) != 1) {
        throw std::runtime_error("a sample doesn't decrypt");
    }
    clear.resize(static_cast<std::size_t>(written + last));
    return clear;
}

void putNumber(std::uint8_t* at, std::size_t value, std::size_t size) {
    for (std::size_t i = 0; i < size; ++i) {
        at[i] = static_cast<std::uint8_t>(value >> (8 * (size - 1 - i)));
    }
}

}  // namespace

Bytes decryptTag(const Bytes& tag, const Bytes& contentKey) {
    if ((tag.at(0) & kEncryptedBit) == 0) return tag;
    const std::size_t prefix = kTagHeader + codecHeaderSize(tag);
    const std::size_t iv = prefix + kFilterHeader.size();
    const std::size_t data = iv + kIvSize;
    if (tag.size() < data + kSizeWord ||
        Bytes(tag.begin() + static_cast<std::ptrdiff_t>(prefix),
              tag.begin() + static_cast<std::ptrdiff_t>(iv)) != kFilterHeader) {
        throw std::runtime_error("a tag has an unknown filter");
    }
    const Bytes sample = decryptSample(tag.data() + data, tag.size() - data - kSizeWord, contentKey,
                                       tag.data() + iv);
    Bytes clear(tag.begin(), tag.begin() + static_cast<std::ptrdiff_t>(prefix));
    clear.insert(clear.end(), sample.begin(), sample.end());
    const std::size_t bodySize = clear.size() - kTagHeader;
    clear.resize(clear.size() + kSizeWord);
    clear[0] = static_cast<std::uint8_t>(clear[0] - kEncryptedBit);
    putNumber(clear.data() + 1, bodySize, 3);
    putNumber(clear.data() + kTagHeader + bodySize, bodySize + kTagHeader, kSizeWord);
    return clear;
}

}  // namespace decrypt
