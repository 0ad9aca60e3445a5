#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "qlix_hlx/KeyDerivation.h"
#include "qlix_hlx/OpenSslPtr.h"

namespace qlix::hlx {

constexpr std::uint32_t kIvSize = 16;
constexpr std::size_t kNonceSize = 8;

/// AES-128-CBC with PKCS#7 padding over whole samples, each under an IV of its own.
///
/// The IV of sample n (from `firstSample`) is the AES-128 block of nonce and n (64 bits, big
/// endian) under a key that serves nothing else: no two are equal under one nonce, and none can be
/// foretold. The cipher contexts are made once; a sample costs no allocation.
class SampleCipher {
public:
    /// `nonce` must be fresh for each run under the same keys. Throws Failure.
    SampleCipher(const ContentKeys& keys, const std::array<std::uint8_t, kNonceSize>& nonce,
                 std::uint64_t firstSample = 0);

    /// The largest sample that `encryptedSize` and `encrypt` take.
    static constexpr std::uint32_t kMaxSampleSize = 0x7FFFFFE0;

    /// The bytes that a sample takes encrypted: the next multiple of 16 above its size.
    static std::uint32_t encryptedSize(std::uint32_t size) { return (size / 16 + 1) * 16; }

    /// Writes encryptedSize(size) bytes to `output` and 16 bytes to `iv`. `data` and `output` don't
    /// overlap. Throws Failure.
    void encrypt(const std::uint8_t* data, std::uint32_t size, std::uint8_t* output,
                 std::uint8_t* iv);

private:
    void nextIv(std::uint8_t* iv);

    CipherContextPtr sampleCipher_;
    CipherContextPtr ivCipher_;
    std::array<std::uint8_t, kNonceSize> nonce_;
    std::uint64_t nextSample_;
};

}  // namespace qlix::hlx
