#include <set>

#include <gtest/gtest.h>

#include "qlix_hlx/SampleCipher.h"
#include "support/Bytes.h"
#include "support/TestLicenseServer.h"

namespace qlix::hlx {
namespace {

using kz::test::Bytes;
using kz::test::bytesOf;
using kz::test::decryptSample;
using kz::test::hex;
using kz::test::pattern;

const Bytes kNistKey = hex("2b7e151628aed2a6abf7158809cf4f3c");

struct Encrypted {
    Bytes iv;
    Bytes data;
};

Encrypted encrypt(SampleCipher& cipher, const Bytes& clear) {
    const auto size = static_cast<std::uint32_t>(clear.size());
    Encrypted result{Bytes(kIvSize), Bytes(SampleCipher::encryptedSize(size))};
    cipher.encrypt(clear.data(), size, result.data.data(), result.iv.data());
    return result;
}

struct Setting {
    Setting(const Bytes& contentKey, const Bytes& ivKey, const Bytes& nonceBytes) {
        std::copy(contentKey.begin(), contentKey.end(), keys.contentKey.data());
        std::copy(ivKey.begin(), ivKey.end(), keys.ivKey.data());
        std::copy(nonceBytes.begin(), nonceBytes.end(), nonce.begin());
    }
    ContentKeys keys;
    std::array<std::uint8_t, kNonceSize> nonce{};
};

// NIST SP 800-38A, F.5.1: the counter blocks f0..ff and the three after it under the example key.
TEST(SampleCipherTest, IvsAreTheEncryptedCounterBlocks) {
    const Setting setting(kNistKey, kNistKey, hex("f0f1f2f3f4f5f6f7"));
    SampleCipher cipher(setting.keys, setting.nonce, 0xf8f9fafbfcfdfeffULL);
    EXPECT_EQ(encrypt(cipher, {}).iv, hex("ec8cdf7398607cb0f2d21675ea9ea1e4"));
    EXPECT_EQ(encrypt(cipher, {}).iv, hex("362b7c3c6773516318a077d7fc5073ae"));
    EXPECT_EQ(encrypt(cipher, {}).iv, hex("6a2cc3787889374fbeb4c81b17ba6c44"));
    EXPECT_EQ(encrypt(cipher, {}).iv, hex("e89c399ff0f198c6d40a31db156cabfe"));
}

// NIST SP 800-38A, F.2.1. The nonce and counter are the block that encrypts to the example's IV.
TEST(SampleCipherTest, SamplesAreEncryptedAsInTheCbcExample) {
    const Setting setting(kNistKey, kNistKey, hex("2880adbdde2a0ea9"));
    SampleCipher cipher(setting.keys, setting.nonce, 0xdc72a7bf6201ec72ULL);
    const Encrypted result = encrypt(cipher, hex(R"(6bc1bee22e409f96e93d7e117393172a
        ae2d8a571e03ac9c9eb76fac45af8e51 30c81c46a35ce411e5fbc1191a0a52ef
        f69f2445df4f9b17ad2b417be66c3710)"));
    EXPECT_EQ(result.iv, hex("000102030405060708090a0b0c0d0e0f"));
    ASSERT_EQ(result.data.size(), 80U);
    EXPECT_EQ(result.data.cutTo(64), hex(R"(7649abac8119b246cee98e9b12e9197d
        5086cb9b507219ee95db113a917678b2 73bed6b8e3c1743b7116e69e22229516
        3ff1caa1681fac09120eca307586e1a7)"));
}

TEST(SampleCipherTest, EverySizeDecryptsAndIsPadded) {
    const Setting setting(kNistKey, hex("000102030405060708090a0b0c0d0e0f"), pattern(8, 1));
    SampleCipher cipher(setting.keys, setting.nonce);
    for (std::size_t size = 0; size < 70; ++size) {
        const Bytes clear = pattern(size, 3);
        const Encrypted result = encrypt(cipher, clear);
        EXPECT_GT(result.data.size(), size);
        EXPECT_LE(result.data.size(), size + 16);
        EXPECT_EQ(decryptSample(result.data, kNistKey, result.iv), clear) << size;
    }
}

TEST(SampleCipherTest, NoIvOccursTwice) {
    const Setting setting(kNistKey, kNistKey, pattern(8, 2));
    SampleCipher cipher(setting.keys, setting.nonce);
    std::set<Bytes> ivs;
    for (int i = 0; i < 5000; ++i) ivs.insert(encrypt(cipher, {}).iv);
    EXPECT_EQ(ivs.size(), 5000U);
}

}  // namespace
}  // namespace qlix::hlx
