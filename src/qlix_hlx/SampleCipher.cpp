#include "qlix_hlx/SampleCipher.h"

#include <algorithm>

#include "qlix_hlx/ByteOrder.h"

namespace qlix::hlx {

SampleCipher::SampleCipher(const ContentKeys& keys,
                           const std::array<std::uint8_t, kNonceSize>& nonce,
                           std::uint64_t firstSample)
    : sampleCipher_(require(EVP_CIPHER_CTX_new())),
      ivCipher_(require(EVP_CIPHER_CTX_new())),
      nonce_(nonce),
      nextSample_(firstSample) {
    require(EVP_EncryptInit_ex(sampleCipher_.get(), EVP_aes_128_cbc(), nullptr,
                               keys.contentKey.data(), nullptr));
    require(EVP_EncryptInit_ex(ivCipher_.get(), EVP_aes_128_ecb(), nullptr, keys.ivKey.data(),
                               nullptr));
    require(EVP_CIPHER_CTX_set_padding(ivCipher_.get(), 0));
}

void SampleCipher::nextIv(std::uint8_t* iv) {
    std::array<std::uint8_t, kIvSize> block{};
    std::copy(nonce_.begin(), nonce_.end(), block.begin());
    storeU64(block.data() + kNonceSize, nextSample_);
    // Counted before use: an IV whose sample failed isn't given to another one.
    ++nextSample_;
    int written = 0;
    require(EVP_EncryptUpdate(ivCipher_.get(), iv, &written, block.data(), kIvSize));
}

void SampleCipher::encrypt(const std::uint8_t* data, std::uint32_t size, std::uint8_t* output,
                           std::uint8_t* iv) {
    if (size > kMaxSampleSize) fail(HLX_ERROR_SAMPLE_TOO_LARGE);
    nextIv(iv);
    EVP_CIPHER_CTX* context = sampleCipher_.get();
    require(EVP_EncryptInit_ex(context, nullptr, nullptr, nullptr, iv));
    int written = 0;
    if (size > 0) {
        require(EVP_EncryptUpdate(context, output, &written, data, static_cast<int>(size)));
    }
    int padded = 0;
    require(EVP_EncryptFinal_ex(context, output + written, &padded));
    if (static_cast<std::uint32_t>(written + padded) != encryptedSize(size)) fail(HLX_ERROR_CRYPTO);
}

}  // namespace qlix::hlx
