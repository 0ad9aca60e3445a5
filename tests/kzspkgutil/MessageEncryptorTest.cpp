#include <cstring>

#include <gtest/gtest.h>

#include "hlx/HLXException.h"
#include "hlx/HLXLibrary.h"
#include "kzspkgutil/MessageEncryptor.h"
#include "kzspkgutil/model/KZSPkgUtilException.h"
#include "qlix_hlx/Random.h"
#include "support/Bytes.h"
#include "support/TestLicenseServer.h"

namespace torvo::kzspkgutil {
namespace {

using kz::test::Bytes;
using kz::test::difference;
using kz::test::fill;
using kz::test::hex;
using kz::test::hexTable;
using kz::test::pattern;
using kz::test::text;
using kz::test::u24;
using kz::test::u32;
using kz::test::u8;

// From the common key and content id below, by openssl kdf.
const Bytes kContentKey = hex("ca9ac0898d52db13b9af74117f78ee31");

bool fixedNonce(std::uint8_t* bytes, std::size_t size) {
    for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<std::uint8_t>(0xa0 + i);
    return true;
}

Bytes imageOf(const TCMessage& message) {
    return kz::test::bytesOf(message.getTag(), message.getTagSize());
}

class MessageEncryptorTest : public ::testing::Test {
protected:
    void SetUp() override {
        hlx::startLibrary();
        qlix::hlx::setRandomSource(fixedNonce);
        use({1, 1, 1, 2, 0});
    }
    void TearDown() override {
        qlix::hlx::setRandomSource(nullptr);
        encryptor = hlx::HLXEncryptor();
        hlx::stopLibrary();
    }
    void use(const hlx::EncryptionFlags& flags) {
        const Bytes key = hex("000102030405060708090a0b0c0d0e0f");
        encryptor = hlx::HLXEncryptor(hlx::SecretBytes(key.begin(), key.end()), "movie7", flags);
    }
    /// A message of type, time in milliseconds, codec header and sample.
    TCMessage message(int type, std::uint64_t timeMs, const Bytes& header, const Bytes& sample) {
        const Bytes body = header + sample;
        const Bytes image = u8(static_cast<std::uint64_t>(type)) + u24(body.size()) + u32(0) +
                            hex("0a0b0c") + body + u32(body.size() + 11);
        const BlockPtr block = arena.allocate(image.size());
        std::memcpy(block->data(), image.data(), image.size());
        return TCMessage(kzs::milliseconds(timeMs), kzs::milliseconds(timeMs),
                         static_cast<std::uint32_t>(image.size()), block,
                         block->data() + 11 + header.size(),
                         static_cast<std::uint32_t>(sample.size()));
    }
    TCMessage encrypted(const TCMessage& clear) {
        return encryptMessage(encryptor, context, clear, false);
    }
    /// Takes an encrypted tag apart whose codec header has `headerSize` bytes.
    static Bytes decrypted(const TCMessage& message, std::size_t headerSize) {
        const Bytes image = imageOf(message);
        const std::size_t filter = 11 + headerSize;
        EXPECT_EQ(image.slice(filter, 8), hex("01 534500 000011 80"));
        return kz::test::decryptSample(image.slice(filter + 24, image.size() - filter - 24 - 4),
                                       kContentKey, image.slice(filter + 8, 16));
    }

    RefCountedMemoryArena arena;
    PackagerContext context{arena};
    hlx::HLXEncryptor encryptor;
};

// IV and sample were made by openssl enc; see the tests of the library.
TEST_F(MessageEncryptorTest, EncryptedTagHasItsLayout) {
    const TCMessage result =
        encrypted(message(9, 0x12345678, hex("17 01 000050"), text("sixteen bytes ok")));
    EXPECT_EQ(difference(imageOf(result), hexTable(R"(
        0   29                                encrypted video
        1   00003d                            body of 61 bytes
        4   34567812                          time
        8   000000                            stream id
        11  1701000050                        codec header
        16  01                                filter count
        17  534500                            SE
        20  000011                            parameters of 17 bytes
        23  80                                this unit is encrypted
        24  31499752319eb0394a35bca9421e6ac5  IV
        40  396f7504e2eaa5f1f51964532f90aa71  sample
        56  a9f5af660f34c7f444869bfd17dc73fd  its end with the padding
        72  00000048                          61 + 11
    )")),
              "");
    // The flag and the IV count as sample data.
    EXPECT_EQ(result.getSampleDataOffset(), 23U);
    EXPECT_EQ(result.getSampleDataSize(), 49U);
    EXPECT_EQ(result.getSampleTime().value, 0x12345678U);
    EXPECT_EQ(result.getMessageTime().value, 0x12345678U);
}

TEST_F(MessageEncryptorTest, EveryClassGetsItsEncryptedType) {
    const struct {
        int clear;
        int encrypted;
    } types[] = {{8, 40}, {9, 41}, {18, 50}, {15, 47}};
    for (const auto& type : types) {
        const TCMessage result = encrypted(message(type.clear, 0, hex("af01"), fill(3, 1)));
        EXPECT_EQ(result.getTag()[0], type.encrypted);
    }
}

TEST_F(MessageEncryptorTest, TypesHaveTheirClasses) {
    const struct {
        std::uint8_t type;
        std::uint32_t trackClass;
    } cases[] = {{9, 1},  {41, 1}, {8, 2},  {40, 2}, {18, 4},
                 {50, 4}, {15, 4}, {47, 4}, {0, 0},  {1, 0}};
    for (const auto& c : cases) EXPECT_EQ(trackClassOf(c.type), c.trackClass) << int{c.type};
    // Bit 7 is masked as well.
    EXPECT_EQ(trackClassOf(0x89), 1U);
}

TEST_F(MessageEncryptorTest, SamplesOfAllSizesDecrypt) {
    for (const std::size_t size : {0U, 1U, 15U, 16U, 17U, 1000U, 70000U}) {
        const Bytes sample = pattern(size, 9);
        EXPECT_EQ(decrypted(encrypted(message(8, 40, hex("af01"), sample)), 2), sample) << size;
    }
}

TEST_F(MessageEncryptorTest, AClearSampleKeepsItsLayoutInANewBlock) {
    use({1, 0, 1, 2, 0});
    const TCMessage clear = message(8, 40, hex("af01"), fill(3, 7));
    const TCMessage result = encrypted(clear);
    EXPECT_NE(result.getBlock(), clear.getBlock());
    EXPECT_EQ(imageOf(result), hex("08 000005 00002800 000000 af01 070707 00000010"));
    EXPECT_EQ(result.getSampleDataOffset(), 13U);
    EXPECT_EQ(result.getSampleDataSize(), 3U);
}

TEST_F(MessageEncryptorTest, TimesBelowTheStartOfProtectionStayClear) {
    use({1, 1, 1, 2, 1500});
    EXPECT_EQ(encrypted(message(9, 1499, hex("1701000000"), fill(3, 7))).getTag()[0], 9);
    EXPECT_EQ(encrypted(message(9, 1500, hex("1701000000"), fill(3, 7))).getTag()[0], 41);
}

TEST_F(MessageEncryptorTest, TheTimeOfTheSampleDecidesNotThatOfTheMessage) {
    use({1, 1, 1, 2, 1500});
    const auto typeAt = [&](std::uint64_t sampleMs, std::uint64_t messageMs) -> int {
        const TCMessage clear = message(9, 0, hex("1701000000"), fill(3, 7));
        const TCMessage other(kzs::milliseconds(sampleMs), kzs::milliseconds(messageMs),
                              clear.getTagSize(), clear.getBlock(),
                              clear.getBlock()->data() + clear.getSampleDataOffset(),
                              clear.getSampleDataSize());
        return encrypted(other).getTag()[0];
    };
    EXPECT_EQ(typeAt(1499, 1500), 9);
    EXPECT_EQ(typeAt(1500, 1499), 41);
}

TEST_F(MessageEncryptorTest, SecondByteOfAVp6HeaderIsEncrypted) {
    for (const int first : {0x14, 0x24, 0x15, 0x25}) {
        const Bytes header = u8(static_cast<std::uint64_t>(first)) + hex("5a");
        const TCMessage result = encrypted(message(9, 0, header, fill(3, 7)));
        EXPECT_EQ(result.getTagBody()[0], first);
        EXPECT_EQ(decrypted(result, 1), hex("5a 070707"));
    }
}

// The tag type isn't asked: 0x64 is sound of another codec with the same low nibble.
TEST_F(MessageEncryptorTest, AudioWithSuchAFirstByteTakesTheSameStep) {
    EXPECT_EQ(decrypted(encrypted(message(8, 0, hex("64"), fill(3, 7))), 0), hex("64 070707"));
    EXPECT_EQ(decrypted(encrypted(message(8, 0, hex("66"), fill(3, 7))), 1), hex("070707"));
}

// A data tag has no codec header: the byte in front of its sample is the last of the stream id,
// and the filter header begins there. Writing the stream id then clears the filter count.
TEST_F(MessageEncryptorTest, DataWithSuchAFirstByteMovesIntoTheTagHeader) {
    const TCMessage result = encrypted(message(18, 0, {}, hex("04 0102")));
    const Bytes image = imageOf(result);
    EXPECT_EQ(image.slice(8, 10), hex("0000 00 534500 000011 80"));
    EXPECT_EQ(kz::test::decryptSample(image.slice(34, 16), kContentKey, image.slice(18, 16)),
              hex("0c 04 0102"));
    EXPECT_EQ(image.cutTo(4), hex("32 000027"));
    EXPECT_EQ(image.slice(image.size() - 4, 4), hex("00000032"));
}

TEST_F(MessageEncryptorTest, AnEmptyBodyIsNotLookedInto) {
    // What stands where the first byte of a body would be says VP6 here.
    const Bytes image = hex("09 000000 00000000 0a0b0c 04000000");
    const BlockPtr block = arena.allocate(image.size());
    std::memcpy(block->data(), image.data(), image.size());
    const TCMessage clear(kzs::milliseconds(0), kzs::milliseconds(0), 15, block, block->data() + 11,
                          0);
    EXPECT_EQ(decrypted(encrypted(clear), 0), Bytes());
}

TEST_F(MessageEncryptorTest, ABodyThatGrowsPastTwentyFourBitsIsRefused) {
    // Header 2, filter 1 + 3 + 3 + 17 bytes: the sample may take 16777189 with its padding.
    const std::size_t largest = 16777184 - 1;
    EXPECT_EQ(encrypted(message(8, 0, hex("af01"), fill(largest, 1))).getTagBodySize(), 16777210U);
    EXPECT_THROW(encrypted(message(8, 0, hex("af01"), fill(largest + 1, 1))), KZSPkgUtilException);
}

TEST_F(MessageEncryptorTest, FailuresOfTheLibraryPassThrough) {
    const TCMessage clear = message(9, 0, hex("1701000000"), fill(3, 7));
    EXPECT_THROW(encryptMessage(hlx::HLXEncryptor(), context, clear, false), hlx::HLXException);
}

}  // namespace
}  // namespace torvo::kzspkgutil
