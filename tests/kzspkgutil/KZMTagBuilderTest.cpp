#include <algorithm>
#include <limits>

#include <gtest/gtest.h>

#include "kzs/base/ByteOrder.h"
#include "kzspkgutil/KZMTagBuilder.h"
#include "kzspkgutil/model/KZSPkgUtilException.h"
#include "support/Bytes.h"

namespace torvo::kzspkgutil {
namespace {

using kz::test::Bytes;
using kz::test::hex;
using kz::test::hexTable;
using kzs::fourCc;

constexpr std::uint32_t kVide = fourCc("vide");
constexpr std::uint32_t kSoun = fourCc("soun");
constexpr std::uint32_t kMeta = fourCc("meta");

KZMSampleFacts sampleOf(std::uint32_t handler, std::uint32_t format) {
    KZMSampleFacts sample;
    sample.handler = handler;
    sample.description.format = format;
    return sample;
}

/// The tag with the sample's bytes in their place.
Bytes tagOf(const KZMSampleFacts& sample, const Bytes& data) {
    RefCountedMemoryArena arena;
    KZMSampleFacts sized = sample;
    sized.sizeBytes = static_cast<std::uint32_t>(data.size());
    const TCMessage message = makeTagFrame(arena, sized);
    EXPECT_EQ(message.getBlock()->size(), message.getTagSize());
    if (message.getSampleDataSize() > 0) {
        std::copy(data.begin(), data.end(),
                  message.getBlock()->data() + message.getSampleDataOffset());
    }
    return kz::test::bytesOf(message.getTag(), message.getTagSize());
}

/// The codec header that a sample of one byte gets.
Bytes headerOf(const KZMSampleFacts& sample) {
    const Bytes tag = tagOf(sample, hex("5a"));
    return tag.slice(11, tag.size() - 11 - 1 - 4);
}

TEST(KZMTagBuilderTest, BuildsTheWholeTagOfAnAvcKeyFrame) {
    KZMSampleFacts sample = sampleOf(kVide, fourCc("avc1"));
    sample.isKeyFrame = true;
    sample.decodeTicks = 0x12345678ULL * 90;
    sample.timescale = 90000;
    sample.compositionTicks = 7200;
    EXPECT_EQ(tagOf(sample, hex("00000002 6588")), hexTable(R"(
        0   09          video
        1   00000b      body size: 5 + 6
        4   345678      time, low 24 bits
        7   12          time, high 8 bits
        8   000000      stream id
        11  17          key frame, AVC
        12  01          NAL units
        13  000050      composition offset: 80 ms
        16  00000002    sample
        20  6588
        22  00000016    11 + 11
    )"));
}

TEST(KZMTagBuilderTest, BuildsTheWholeTagOfAnAacFrame) {
    KZMSampleFacts sample = sampleOf(kSoun, fourCc("mp4a"));
    sample.decodeTicks = 1024;
    sample.timescale = 44100;
    EXPECT_EQ(tagOf(sample, hex("2110 05")), hexTable(R"(
        0   08          audio
        1   000005      body size: 2 + 3
        4   00001700    23.2 ms, truncated
        8   000000      stream id
        11  af01        AAC, raw
        13  211005      sample
        16  00000010    5 + 11
    )"));
}

TEST(KZMTagBuilderTest, PutsDataRightBehindTheTagHeader) {
    EXPECT_EQ(tagOf(sampleOf(kMeta, fourCc("amf0")), hex("0200")),
              hex("12 000002 00000000 000000 0200 0000000d"));
    EXPECT_EQ(tagOf(sampleOf(kMeta, fourCc("amf3")), hex("0200")),
              hex("0f 000002 00000000 000000 0200 0000000d"));
}

struct FormCase {
    const char* name;
    std::uint32_t handler;
    std::uint32_t format;
    std::uint8_t tagType;
    const char* keyHeader;
    const char* otherHeader;
};

class TagFormTest : public testing::TestWithParam<FormCase> {};

// The VP6 rows are of 320 x 240: both low nibbles are 0, and the complement of 0 is ff. The nmos
// row is of rate 0.
INSTANTIATE_TEST_SUITE_P(
    AllFormats, TagFormTest,
    testing::Values(FormCase{"H264", kVide, fourCc("H264"), 9, "17 01 000000", "27 01 000000"},
                    FormCase{"h264", kVide, fourCc("h264"), 9, "17 01 000000", "27 01 000000"},
                    FormCase{"avc1", kVide, fourCc("avc1"), 9, "17 01 000000", "27 01 000000"},
                    FormCase{"mp4v", kVide, fourCc("mp4v"), 9, "17 01 000000", "27 01 000000"},
                    FormCase{"VP6F", kVide, fourCc("VP6F"), 9, "14 ff", "24 ff"},
                    FormCase{"VP6A", kVide, fourCc("VP6A"), 9, "15 ff", "25 ff"},
                    FormCase{"H263", kVide, fourCc("H263"), 9, "12", "22"},
                    FormCase{"mp4a", kSoun, fourCc("mp4a"), 8, "af 01", "af 01"},
                    FormCase{"mp3", kSoun, fourCc(".mp3"), 8, "2f", "2f"},
                    FormCase{"spex", kSoun, fourCc("spex"), 8, "b2", "b2"},
                    FormCase{"nmos", kSoun, fourCc("nmos"), 8, "6c", "6c"},
                    FormCase{"opus", kSoun, fourCc("opus"), 8, "ce", "ce"},
                    FormCase{"ac3", kSoun, fourCc("ac-3"), 8, "df 01", "df 01"},
                    FormCase{"ec3", kSoun, fourCc("ec-3"), 8, "df 02", "df 02"},
                    FormCase{"dtsc", kSoun, fourCc("dtsc"), 8, "df 03", "df 03"},
                    FormCase{"dtse", kSoun, fourCc("dtse"), 8, "df 04", "df 04"},
                    FormCase{"dtsh", kSoun, fourCc("dtsh"), 8, "df 05", "df 05"},
                    FormCase{"dtsl", kSoun, fourCc("dtsl"), 8, "df 06", "df 06"},
                    FormCase{"amf0", kMeta, fourCc("amf0"), 18, "", ""},
                    FormCase{"amf3", kMeta, fourCc("amf3"), 15, "", ""}),
    [](const auto& form) { return std::string(form.param.name); });

TEST_P(TagFormTest, HasItsTagTypeAndHeader) {
    KZMSampleFacts sample = sampleOf(GetParam().handler, GetParam().format);
    sample.description.width = 320;
    sample.description.height = 240;
    EXPECT_EQ(tagOf(sample, hex("00")).front(), GetParam().tagType);
    EXPECT_EQ(headerOf(sample), hex(GetParam().otherHeader));
    sample.isKeyFrame = true;
    EXPECT_EQ(headerOf(sample), hex(GetParam().keyHeader));
}

TEST_P(TagFormTest, HasItsSampleRightBehindTheHeader) {
    RefCountedMemoryArena arena;
    KZMSampleFacts sample = sampleOf(GetParam().handler, GetParam().format);
    sample.sizeBytes = 100;
    const TCMessage message = makeTagFrame(arena, sample);
    EXPECT_EQ(message.getSampleDataOffset(), 11 + hex(GetParam().keyHeader).size());
    EXPECT_EQ(message.getSampleDataSize(), 100U);
    EXPECT_EQ(message.getTagSize(), message.getSampleDataOffset() + 100 + 4);
}

TEST(Vp6TagTest, ComplementsTheLowNibblesOfWidthAndHeight) {
    KZMSampleFacts sample = sampleOf(kVide, fourCc("VP6F"));
    sample.description.width = 0x145;
    sample.description.height = 0xF3;
    EXPECT_EQ(headerOf(sample), hex("24 ac"));  // the complement of 53
}

TEST(Vp6TagTest, HasNoAlphaOffsetWithAlpha) {
    RefCountedMemoryArena arena;
    EXPECT_EQ(makeTagFrame(arena, sampleOf(kVide, fourCc("VP6A"))).getSampleDataOffset(), 13U);
}

Bytes compositionOf(std::uint32_t ticks, std::uint32_t timescale) {
    KZMSampleFacts sample = sampleOf(kVide, fourCc("avc1"));
    sample.compositionTicks = ticks;
    sample.timescale = timescale;
    return headerOf(sample).slice(2, 3);
}

TEST(AvcTagTest, WritesANegativeCompositionOffsetIn24Bits) {
    EXPECT_EQ(compositionOf(0xFFFFFFFF, 1000), hex("ffffff"));  // -1 ms
    EXPECT_EQ(compositionOf(0xFFFFF060, 1000), hex("fff060"));  // -4000 ms
}

TEST(AvcTagTest, TruncatesTheCompositionOffsetTowardsZero) {
    EXPECT_EQ(compositionOf(3003, 90000), hex("000021"));        // 33.37 ms
    EXPECT_EQ(compositionOf(0xFFFFF445, 90000), hex("ffffdf"));  // -33.37 ms gives -33
    EXPECT_EQ(compositionOf(89, 90000), hex("000000"));          // 0.99 ms
    EXPECT_EQ(compositionOf(0xFFFFFFA7, 90000), hex("000000"));  // -0.99 ms
}

TEST(AvcTagTest, CutsACompositionOffsetTo24Bits) {
    EXPECT_EQ(compositionOf(0x7FFFFFFF, 1), hex("fffc18"));  // (2^31 - 1) * 1000 = ...fffffc18
}

struct NellymoserCase {
    float rate;
    std::uint32_t sampleSize;
    std::uint32_t channels;
    const char* byte;
};

TEST(NellymoserTagTest, ComputesItsByteFromRateAndSizeAndChannels) {
    const NellymoserCase cases[] = {
        {8000, 0, 1, "50"},     {8000, 2, 1, "52"},    {8000, 2, 2, "52"},  {8000.5F, 0, 2, "50"},
        {8001, 0, 2, "6d"},     {7999.9F, 0, 1, "6c"}, {16000, 0, 2, "40"}, {16000, 2, 2, "42"},
        {16000.9F, 0, 1, "40"}, {4000, 0, 1, "6c"},    {4001, 0, 1, "60"},  {5512, 2, 2, "63"},
        {5999, 0, 2, "61"},     {6000, 0, 1, "6c"},    {10000, 0, 1, "6c"}, {11025, 0, 1, "64"},
        {11025, 2, 2, "67"},    {12000, 0, 1, "6c"},   {21000, 0, 1, "6c"}, {22050, 0, 1, "68"},
        {22050, 2, 2, "6b"},    {22999, 0, 2, "69"},   {23000, 0, 1, "6c"}, {44100, 0, 1, "6c"},
        {44100, 2, 2, "6f"},    {0, 0, 1, "6c"},       {65535, 0, 2, "6d"},
    };
    for (const NellymoserCase& row : cases) {
        KZMSampleFacts sample = sampleOf(kSoun, fourCc("nmos"));
        sample.description.sampleRate = row.rate;
        sample.description.sampleSize = row.sampleSize;
        sample.description.channelCount = row.channels;
        EXPECT_EQ(headerOf(sample), hex(row.byte))
            << row.rate << " Hz, size " << row.sampleSize << ", " << row.channels << " channels";
    }
}

TEST(NellymoserTagTest, HasNoSizeBitForASampleSizeInBits) {
    KZMSampleFacts sample = sampleOf(kSoun, fourCc("nmos"));
    sample.description.sampleRate = 22050;
    sample.description.sampleSize = 16;
    sample.description.channelCount = 1;
    EXPECT_EQ(headerOf(sample), hex("68"));
}

TEST(NellymoserTagTest, HasNoStereoBitForMoreThanTwoChannels) {
    KZMSampleFacts sample = sampleOf(kSoun, fourCc("nmos"));
    sample.description.sampleRate = 22050;
    sample.description.channelCount = 6;
    EXPECT_EQ(headerOf(sample), hex("68"));
}

TEST(KZMTagBuilderTest, GivesAnUnknownFormatATagWithoutTypeAndBody) {
    for (const std::uint32_t format : {fourCc("text"), fourCc("tx3g"), 0U}) {
        RefCountedMemoryArena arena;
        KZMSampleFacts sample = sampleOf(kMeta, format);
        sample.sizeBytes = 1000;
        sample.decodeTicks = 5;
        const TCMessage message = makeTagFrame(arena, sample);
        EXPECT_EQ(kz::test::bytesOf(message.getTag(), message.getTagSize()),
                  hex("00 000000 00000500 000000 0000000b"));
        EXPECT_EQ(message.getBlock()->size(), 15U);
        EXPECT_EQ(message.getSampleDataSize(), 0U);
        EXPECT_EQ(message.getSampleDataOffset(), 11U);
    }
}

TEST(KZMTagBuilderTest, KnowsAFormatOnlyWithItsHandler) {
    EXPECT_EQ(tagOf(sampleOf(kSoun, fourCc("avc1")), hex("00")).front(), 0);
    EXPECT_EQ(tagOf(sampleOf(kVide, fourCc("mp4a")), hex("00")).front(), 0);
    EXPECT_EQ(tagOf(sampleOf(kVide, fourCc("amf0")), hex("00")).front(), 0);
}

TEST(KZMTagBuilderTest, KeepsTheHeaderOfAnEmptySample) {
    EXPECT_EQ(tagOf(sampleOf(kSoun, fourCc("mp4a")), Bytes()),
              hex("08 000002 00000000 000000 af01 0000000d"));
}

TEST(KZMTagBuilderTest, SetsBothTimesToThatOfTheSample) {
    RefCountedMemoryArena arena;
    KZMSampleFacts sample = sampleOf(kVide, fourCc("H263"));
    sample.decodeTicks = 450045;
    sample.timescale = 90000;
    const TCMessage message = makeTagFrame(arena, sample);
    EXPECT_EQ(message.getSampleTime().value, 5000U);
    EXPECT_EQ(message.getSampleTime().timescale, 1000U);
    EXPECT_EQ(message.getMessageTime().value, 5000U);
    EXPECT_EQ(message.getMessageTime().timescale, 1000U);
}

TEST(KZMTagBuilderTest, RefusesASampleThatA24BitSizeCannotTell) {
    RefCountedMemoryArena arena;
    KZMSampleFacts sample = sampleOf(kVide, fourCc("avc1"));
    sample.sizeBytes = 0xFFFFFF - 5;
    EXPECT_EQ(makeTagFrame(arena, sample).getTagBodySize(), 0xFFFFFFU);
    sample.sizeBytes += 1;
    EXPECT_THROW(makeTagFrame(arena, sample), KZSPkgUtilException);
    sample.sizeBytes = 0xFFFFFFFF;
    EXPECT_THROW(makeTagFrame(arena, sample), KZSPkgUtilException);
}

TEST(SampleTimeTest, IsInMillisecondsTruncated) {
    EXPECT_EQ(sampleTimeOf(0, 90000).value, 0U);
    EXPECT_EQ(sampleTimeOf(89, 90000).value, 0U);
    EXPECT_EQ(sampleTimeOf(90, 90000).value, 1U);
    EXPECT_EQ(sampleTimeOf(44100, 44100).value, 1000U);
    EXPECT_EQ(sampleTimeOf(600, 600).timescale, 1000U);
}

TEST(SampleTimeTest, GoesBeyond32Bits) {
    EXPECT_EQ(sampleTimeOf(9000000000000ULL, 90000).value, 100000000000ULL);
}

TEST(SampleTimeTest, StaysDefinedForDamagedTimes) {
    EXPECT_EQ(sampleTimeOf(std::numeric_limits<std::uint64_t>::max(), 1).value,
              0x7FFFFFFFFFFFFFFFULL);
    EXPECT_EQ(sampleTimeOf(5, 0).value, 0U);
}

}  // namespace
}  // namespace torvo::kzspkgutil
