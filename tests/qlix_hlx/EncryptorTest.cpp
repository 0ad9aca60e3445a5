#include <algorithm>

#include "qlix_hlx/LibraryFixture.h"
#include "qlix_hlx/Random.h"
#include "support/TestLicenseServer.h"

namespace qlix::hlx {
namespace {

using kz::test::Bytes;
using kz::test::decryptSample;
using kz::test::fill;
using kz::test::hex;
using kz::test::pattern;
using kz::test::text;

class EncryptorTest : public LibraryTest {
protected:
    void TearDown() override {
        setRandomSource(nullptr);
        LibraryTest::TearDown();
    }

    HLXEncryptionInfo prepare(QlixHLXEncryptor* encryptor, const Bytes& sample,
                              std::uint32_t trackClass = HLX_TRACK_VIDEO,
                              std::uint64_t timeMs = 0) const {
        HLXEncryptionInfo info{};
        EXPECT_EQ(encryptors->prepareSample(encryptor, sample.data(), sizeOf(sample), trackClass,
                                            timeMs, nullptr, nullptr, &info, 0, 4),
                  HLX_OK);
        return info;
    }

    struct Encrypted {
        HLXResult result = HLX_OK;
        Bytes data = Bytes();
        Bytes iv = Bytes();
    };
    Encrypted encrypt(QlixHLXEncryptor* encryptor, const Bytes& sample, std::size_t room,
                      std::uint32_t ivRoom = 16) const {
        Encrypted out;
        out.data.assign(room, 0);
        out.iv.assign(16, 0);
        auto size = static_cast<std::uint32_t>(room);
        out.result =
            encryptors->encrypt(encryptor, sample.data(), sizeOf(sample), out.data.data(), &size,
                                nullptr, nullptr, nullptr, nullptr, out.iv.data(), &ivRoom);
        out.data = out.data.cutTo(size);
        return out;
    }
};

bool fixedNonce(std::uint8_t* bytes, std::size_t size) {
    for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<std::uint8_t>(0xa0 + i);
    return true;
}

// The keys are those of KeyDerivationTest, the expected bytes were made with
//   openssl enc -aes-128-ecb -nopad -K <iv key>       of a0...a7 and the counter, for the IV
//   openssl enc -aes-128-cbc -K <content key> -iv ...  for the sample
TEST_F(EncryptorTest, SamplesAreThoseOfTheCommandLineTool) {
    setRandomSource(fixedNonce);
    QlixHLXEncryptor* encryptor = makeEncryptor();
    const Bytes sample = text("sixteen bytes ok");
    prepare(encryptor, sample);
    const Encrypted first = encrypt(encryptor, sample, 32);
    EXPECT_EQ(first.iv, hex("31499752319eb0394a35bca9421e6ac5"));
    EXPECT_EQ(first.data, hex("396f7504e2eaa5f1f51964532f90aa71a9f5af660f34c7f444869bfd17dc73fd"));
    prepare(encryptor, sample);
    const Encrypted second = encrypt(encryptor, sample, 32);
    EXPECT_EQ(second.iv, hex("881eaa54e62c4454d53eebcdd9942a86"));
    EXPECT_EQ(second.data, hex("d7e2b398034788eaecbee5601a6acf7b2e7cbed8ce58e03d1ef4d4f4b1fc63ea"));
    HLXRelease(encryptor);
}

TEST_F(EncryptorTest, PrepareAnnouncesFilterSizesAndIv) {
    QlixHLXEncryptor* encryptor = makeEncryptor();
    const HLXEncryptionInfo info = prepare(encryptor, fill(100, 1));
    ASSERT_EQ(info.filterCount, 1U);
    EXPECT_STREQ(info.filterNames[0], "SE");
    EXPECT_EQ(info.encrypted, 1U);
    EXPECT_EQ(info.encryptedSize, 112U);
    EXPECT_EQ(info.ivSize, 16U);
    EXPECT_EQ(prepare(encryptor, fill(112, 1)).encryptedSize, 128U);
    HLXRelease(encryptor);
}

TEST_F(EncryptorTest, SamplesThatStayClearKeepTheirSize) {
    Flags flags;
    flags.clearMs = 1500;
    QlixHLXEncryptor* encryptor = makeEncryptor(flags);
    const HLXEncryptionInfo info = prepare(encryptor, fill(100, 1), HLX_TRACK_AUDIO, 1499);
    EXPECT_EQ(info.encrypted, 0U);
    EXPECT_EQ(info.encryptedSize, 100U);
    EXPECT_EQ(encrypt(encryptor, fill(100, 1), 200).result, HLX_ERROR_SAMPLE_NOT_PREPARED);
    HLXRelease(encryptor);
}

TEST_F(EncryptorTest, TwoRunsOfOneContentShareTheKeyAndNoIv) {
    const Bytes sample = pattern(50, 1);
    const Bytes key = hex("ca9ac0898d52db13b9af74117f78ee31");
    Bytes ivs[2];
    for (Bytes& iv : ivs) {
        QlixHLXEncryptor* encryptor = makeEncryptor();
        prepare(encryptor, sample);
        const Encrypted result = encrypt(encryptor, sample, 64);
        EXPECT_EQ(decryptSample(result.data, key, result.iv), sample);
        iv = result.iv;
        HLXRelease(encryptor);
    }
    EXPECT_NE(ivs[0], ivs[1]);
}

TEST_F(EncryptorTest, EncryptTakesOnlyWhatWasAnnouncedAndOnlyOnce) {
    QlixHLXEncryptor* encryptor = makeEncryptor();
    const Bytes sample = fill(20, 1);
    EXPECT_EQ(encrypt(encryptor, sample, 32).result, HLX_ERROR_SAMPLE_NOT_PREPARED);
    prepare(encryptor, sample);
    EXPECT_EQ(encrypt(encryptor, fill(21, 1), 32).result, HLX_ERROR_SAMPLE_NOT_PREPARED);
    EXPECT_EQ(encrypt(encryptor, sample, 31).result, HLX_ERROR_OUTPUT_TOO_SMALL);
    EXPECT_EQ(encrypt(encryptor, sample, 32, 15).result, HLX_ERROR_OUTPUT_TOO_SMALL);
    EXPECT_EQ(encrypt(encryptor, sample, 40).data.size(), 32U);
    EXPECT_EQ(encrypt(encryptor, sample, 32).result, HLX_ERROR_SAMPLE_NOT_PREPARED);
    HLXRelease(encryptor);
}

TEST_F(EncryptorTest, AnEmptySampleBecomesOneBlock) {
    QlixHLXEncryptor* encryptor = makeEncryptor();
    EXPECT_EQ(prepare(encryptor, {}).encryptedSize, 16U);
    EXPECT_EQ(encrypt(encryptor, {}, 16).data.size(), 16U);
    HLXRelease(encryptor);
}

TEST_F(EncryptorTest, CreateRefusesBadKeysIdsAndLevels) {
    QlixHLXEncryptor* encryptor = nullptr;
    EXPECT_EQ(create(&encryptor, {}, "x", Flags()), HLX_ERROR_COMMON_KEY_TOO_SHORT);
    EXPECT_EQ(create(&encryptor, fill(15, 1), "x", Flags()), HLX_ERROR_COMMON_KEY_TOO_SHORT);
    EXPECT_EQ(create(&encryptor, kCommonKey, "", Flags()), HLX_ERROR_CONTENT_ID_EMPTY);
    Flags flags;
    flags.level = 3;
    EXPECT_EQ(create(&encryptor, kCommonKey, "x", flags), HLX_ERROR_BAD_VIDEO_LEVEL);
    EXPECT_EQ(create(nullptr, kCommonKey, "x", Flags()), HLX_ERROR_BAD_ARGUMENT);
    EXPECT_EQ(encryptor, nullptr);
}

TEST_F(EncryptorTest, ReservedArgumentsMustBeWhatTheyAre) {
    QlixHLXEncryptor* encryptor = nullptr;
    EXPECT_EQ(
        encryptors->create(&encryptor, kCommonKey.data(), 16, "x", 1, 1, 1, 1, 2, 0, 0, 0, nullptr),
        HLX_ERROR_BAD_ARGUMENT);
    EXPECT_EQ(encryptors->create(&encryptor, kCommonKey.data(), 16, "x", 1, 1, 1, 1, 2, 0, 1, 0,
                                 &encryptor),
              HLX_ERROR_BAD_ARGUMENT);
    EXPECT_EQ(encryptors->prepareSample(nullptr, nullptr, 0, 1, 0, nullptr, nullptr, nullptr, 0, 4),
              HLX_ERROR_BAD_HANDLE);
}

TEST_F(EncryptorTest, AFailingRandomSourceFailsCreate) {
    setRandomSource([](std::uint8_t*, std::size_t) { return false; });
    QlixHLXEncryptor* encryptor = nullptr;
    EXPECT_EQ(create(&encryptor, kCommonKey, "x", Flags()), HLX_ERROR_CRYPTO);
}

}  // namespace
}  // namespace qlix::hlx
