#include <random>
#include <stdexcept>

#include <gtest/gtest.h>

#include "kzs/Base64.h"
#include "kzs/SlowBase64.h"

using namespace kz::test;
using torvo::kzs::base64Decode;
using torvo::kzs::base64Encode;

namespace {

const std::pair<const char*, const char*> kVectors[] = {
    {"", ""},
    {"f", "Zg=="},
    {"fo", "Zm8="},
    {"foo", "Zm9v"},
    {"foob", "Zm9vYg=="},
    {"fooba", "Zm9vYmE="},
    {"foobar", "Zm9vYmFy"},
};

}  // namespace

TEST(Base64Test, EncodesWithPaddingAndWithoutLineBreaks) {
    for (const auto& [plain, encoded] : kVectors) EXPECT_EQ(base64Encode(text(plain)), encoded);
    EXPECT_EQ(base64Encode(hex("fbefbe fffffe")), "++++///+");
    EXPECT_EQ(base64Encode(fill(300, 0)), std::string(400, 'A'));
}

TEST(Base64Test, DecodesWhatIsEncoded) {
    for (const auto& [plain, encoded] : kVectors) EXPECT_EQ(base64Decode(encoded), text(plain));
    EXPECT_EQ(base64Decode("++++///+"), hex("fbefbe fffffe"));
}

TEST(Base64Test, DecodesAMinusAsASlash) {
    EXPECT_EQ(base64Decode("----"), hex("ffffff"));
    EXPECT_EQ(base64Decode("-w=="), hex("ff"));
}

TEST(Base64Test, RefusesAnyByteOutsideTheAlphabet) {
    const std::string alphabet =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/-";
    for (int byte = 0; byte < 256; ++byte) {
        const char c = static_cast<char>(byte);
        if (alphabet.find(c) != std::string::npos) continue;
        EXPECT_THROW(base64Decode(std::string("Zm") + c + "vZm9v"), std::runtime_error) << byte;
    }
}

TEST(Base64Test, RefusesWhiteSpaceBetweenGroups) {
    EXPECT_THROW(base64Decode("Zm9v Zm9v"), std::runtime_error);
    EXPECT_THROW(base64Decode("Zm9v\nZm9vZm9"), std::runtime_error);
}

TEST(Base64Test, RefusesAGroupThatIsNotFinished) {
    for (const char* encoded : {"Z", "Zm", "Zm9", "Zm9vZ", "Zm9vZg", "Zm9vZg=", "Zm=", "Z=="}) {
        EXPECT_THROW(base64Decode(encoded), std::runtime_error) << encoded;
    }
}

TEST(Base64Test, RefusesPaddingAnywhereButAtTheEnd) {
    for (const char* encoded : {"Zg==Zm9v", "====", "Z===", "=m9v", "Z=9v", "Zm=v", "Zm8=Zm8="}) {
        EXPECT_THROW(base64Decode(encoded), std::runtime_error) << encoded;
    }
}

TEST(Base64Test, AgreesWithABitByBitModelOnRandomBytes) {
    const unsigned seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    for (int round = 0; round < 200; ++round) {
        Bytes bytes(random() % 70);
        for (auto& byte : bytes) byte = static_cast<std::uint8_t>(random());
        const std::string encoded = slowBase64(bytes);
        EXPECT_EQ(base64Encode(bytes), encoded);
        EXPECT_EQ(base64Decode(encoded), bytes);
    }
}
