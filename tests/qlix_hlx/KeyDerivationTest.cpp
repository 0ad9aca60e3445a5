#include <gtest/gtest.h>

#include "qlix_hlx/Failure.h"
#include "qlix_hlx/KeyDerivation.h"
#include "support/Bytes.h"

namespace qlix::hlx {
namespace {

using kz::test::Bytes;
using kz::test::bytesOf;
using kz::test::fill;
using kz::test::hex;

ByteView view(const Bytes& bytes) { return {bytes.data(), bytes.size()}; }

Bytes hkdf(const Bytes& key, const Bytes& salt, const Bytes& info, std::size_t size) {
    Bytes output(size);
    hkdfSha256(view(key), view(salt), view(info), output.data(), size);
    return output;
}

std::uint32_t resultOf(const Bytes& commonKey, const std::string& contentId) {
    ContentKeys keys;
    try {
        deriveContentKeys(view(commonKey), contentId, keys);
    } catch (const Failure& failure) {
        return failure.result;
    }
    return HLX_OK;
}

// RFC 5869, appendix A.1.
TEST(KeyDerivationTest, HkdfGivesTheFirstVectorOfItsRfc) {
    EXPECT_EQ(
        hkdf(fill(22, 0x0b), hex("000102030405060708090a0b0c"), hex("f0f1f2f3f4f5f6f7f8f9"), 42),
        hex("3cb25f25faacd57a90434f64d0362f2a2d2d0a90cf1a5a4c5db02d56ecc4c5bf"
            "34007208d5b887185865"));
}

// RFC 5869, appendix A.3.
TEST(KeyDerivationTest, HkdfGivesTheVectorWithoutSaltAndInfo) {
    EXPECT_EQ(hkdf(fill(22, 0x0b), {}, {}, 42),
              hex("8da4e775a563c18f715f802a063c5a31b8a11f5c5ee1879ec3454e5f3c738d2d"
                  "9d201395faa4b61a96c8"));
}

// Made with the command line, each with its own hexinfo:
//   openssl kdf -keylen 16 -kdfopt digest:SHA256 -kdfopt hexkey:000102030405060708090a0b0c0d0e0f
//     -kdfopt salt:"qlix-hlx key derivation, version 1"
//     -kdfopt hexinfo:636f6e74656e74206b657900000000066d6f76696537 HKDF
TEST(KeyDerivationTest, ContentKeysAreThoseOfTheCommandLineTool) {
    ContentKeys keys;
    deriveContentKeys(view(hex("000102030405060708090a0b0c0d0e0f")), "movie7", keys);
    EXPECT_EQ(bytesOf(keys.contentKey.data(), kKeySize), hex("ca9ac0898d52db13b9af74117f78ee31"));
    EXPECT_EQ(bytesOf(keys.ivKey.data(), kKeySize), hex("1a18a49a208133cfefd43e1cfcbe4fda"));
    EXPECT_EQ(bytesOf(keys.keyId.data(), kKeySize), hex("03321175c8ecabb5330e7d0b328ed3be"));
}

TEST(KeyDerivationTest, CommonKeyNeedsSixteenBytes) {
    EXPECT_EQ(resultOf({}, "movie"), HLX_ERROR_COMMON_KEY_TOO_SHORT);
    EXPECT_EQ(resultOf(fill(15, 1), "movie"), HLX_ERROR_COMMON_KEY_TOO_SHORT);
    EXPECT_EQ(resultOf(fill(16, 1), "movie"), HLX_OK);
    EXPECT_EQ(resultOf(fill(100000, 1), "movie"), HLX_OK);
}

TEST(KeyDerivationTest, ContentIdHasOneToFiveHundredAndTwelveBytes) {
    EXPECT_EQ(resultOf(fill(16, 1), ""), HLX_ERROR_CONTENT_ID_EMPTY);
    EXPECT_EQ(resultOf(fill(16, 1), "x"), HLX_OK);
    EXPECT_EQ(resultOf(fill(16, 1), std::string(512, 'x')), HLX_OK);
    EXPECT_EQ(resultOf(fill(16, 1), std::string(513, 'x')), HLX_ERROR_CONTENT_ID_TOO_LONG);
}

}  // namespace
}  // namespace qlix::hlx
