#include <gtest/gtest.h>

#include "qlix_hlx/SampleRules.h"
#include "support/Bytes.h"

namespace qlix::hlx {
namespace {

using kz::test::Bytes;
using kz::test::raw;
using kz::test::u32;

constexpr std::uint32_t kVideo = 1;
constexpr std::uint32_t kAudio = 2;
constexpr std::uint32_t kData = 4;

/// A NAL unit of a header byte and two more, behind its length.
Bytes unit(int header) { return u32(3) + raw({header, 0xAA, 0xBB}); }

const Bytes kKeyPicture = unit(0x67) + unit(0x68) + unit(0x65);
const Bytes kReferencePicture = unit(0x06) + unit(0x41);
const Bytes kDisposablePicture = unit(0x06) + unit(0x01);

bool encrypts(std::uint32_t level, const Bytes& sample, std::uint32_t nalLengthSize = 4) {
    const EncryptionFlags flags{1, 1, 1, level, 0};
    return mustEncrypt(flags, kVideo, 0, {sample.data(), sample.size()}, nalLengthSize);
}

TEST(SampleRulesTest, LevelsTakeKeyPicturesThenReferencesThenAll) {
    EXPECT_TRUE(encrypts(0, kKeyPicture));
    EXPECT_FALSE(encrypts(0, kReferencePicture));
    EXPECT_FALSE(encrypts(0, kDisposablePicture));

    EXPECT_TRUE(encrypts(1, kKeyPicture));
    EXPECT_TRUE(encrypts(1, kReferencePicture));
    EXPECT_FALSE(encrypts(1, kDisposablePicture));

    EXPECT_TRUE(encrypts(2, kKeyPicture));
    EXPECT_TRUE(encrypts(2, kReferencePicture));
    EXPECT_TRUE(encrypts(2, kDisposablePicture));
}

TEST(SampleRulesTest, OneReferenceSliceMakesTheWholeSampleAReference) {
    EXPECT_TRUE(encrypts(1, unit(0x01) + unit(0x61)));
}

// Parameter sets and supplements carry a reference field, too, but are no pictures.
TEST(SampleRulesTest, OnlySlicesCount) {
    EXPECT_FALSE(encrypts(1, unit(0x67) + unit(0x68) + unit(0x66) + unit(0x01)));
    EXPECT_FALSE(encrypts(0, unit(0x67)));
}

TEST(SampleRulesTest, BytesThatNalUnitsDontFillAreEncryptedAtEveryLevel) {
    const Bytes samples[] = {
        Bytes{},
        raw({0, 0, 0}),
        kDisposablePicture + raw({0}),
        kDisposablePicture.cutTo(kDisposablePicture.size() - 1),
        unit(0x01) + u32(0),
        unit(0x81),
        u32(0xFFFFFFFF) + raw({0x01}),
    };
    for (const Bytes& sample : samples) {
        EXPECT_FALSE(judgePicture({sample.data(), sample.size()}).judged);
        for (std::uint32_t level = 0; level <= 2; ++level) EXPECT_TRUE(encrypts(level, sample));
    }
}

TEST(SampleRulesTest, AnotherLengthSizeIsNotJudged) {
    EXPECT_TRUE(encrypts(0, kDisposablePicture, 2));
    EXPECT_TRUE(encrypts(1, kDisposablePicture, 0));
}

TEST(SampleRulesTest, EachClassHasItsFlagAndUnknownOnesStayClear) {
    const struct {
        EncryptionFlags flags;
        bool video, audio, data;
    } cases[] = {
        {{1, 0, 0, 2, 0}, true, false, false},
        {{0, 1, 0, 2, 0}, false, true, false},
        {{0, 0, 1, 2, 0}, false, false, true},
        {{0, 0, 0, 2, 0}, false, false, false},
    };
    for (const auto& c : cases) {
        const ByteView sample{kKeyPicture.data(), kKeyPicture.size()};
        EXPECT_EQ(mustEncrypt(c.flags, kVideo, 0, sample, 4), c.video);
        EXPECT_EQ(mustEncrypt(c.flags, kAudio, 0, sample, 4), c.audio);
        EXPECT_EQ(mustEncrypt(c.flags, kData, 0, sample, 4), c.data);
        EXPECT_FALSE(mustEncrypt(c.flags, 0, 0, sample, 4));
    }
}

// The levels are for video: an audio sample that happens to look like NAL units is encrypted.
TEST(SampleRulesTest, LevelsDontTouchAudio) {
    const EncryptionFlags flags{1, 1, 1, 0, 0};
    EXPECT_TRUE(
        mustEncrypt(flags, kAudio, 0, {kDisposablePicture.data(), kDisposablePicture.size()}, 4));
}

TEST(SampleRulesTest, TimesBelowTheClearStartStayClear) {
    const EncryptionFlags flags{1, 1, 1, 2, 1500};
    const ByteView sample{kKeyPicture.data(), kKeyPicture.size()};
    EXPECT_FALSE(mustEncrypt(flags, kVideo, 0, sample, 4));
    EXPECT_FALSE(mustEncrypt(flags, kAudio, 1499, sample, 4));
    EXPECT_TRUE(mustEncrypt(flags, kVideo, 1500, sample, 4));
    EXPECT_TRUE(mustEncrypt(flags, kVideo, 0x100000000ULL, sample, 4));
}

}  // namespace
}  // namespace qlix::hlx
