#include <gtest/gtest.h>

#include "KZMSourceFixture.h"
#include "support/ThrownCode.h"

namespace torvo::kzspkgutil {
namespace {

using kz::test::codeThrownBy;
using kz::test::hex;
using kz::test::pattern;
using kz::test::raw;
using kzs::FragmenterSample;
using test::audioEntry;
using test::audioTrack;
using test::Bytes;
using test::dataTrack;
using test::fragmentedKzmFile;
using test::kzmFile;
using test::KzmTrack;
using test::videoEntry;
using test::videoTrack;

using KZMSampleIteratorTest = test::KZMSourceFixture;

TEST_F(KZMSampleIteratorTest, GivesTheSamplesOfAllTracksByTime) {
    const auto source = open(kzmFile({videoTrack(), audioTrack(), dataTrack()}));
    const auto samples = samplesOf(*source);
    // Video at 0 and 40, audio at 0 and 30, data at 0; ties go to the earlier track.
    ASSERT_EQ(samples.size(), 5U);
    const std::uint32_t kinds[] = {1, 0, 2, 0, 1};
    const std::uint64_t times[] = {0, 0, 0, 30, 40};
    for (std::size_t i = 0; i < samples.size(); ++i) {
        EXPECT_EQ(samples[i].sample.trackKind, kinds[i]) << i;
        EXPECT_EQ(samples[i].sample.time.value, times[i]) << i;
        EXPECT_EQ(samples[i].sample.time.timescale, 1000U) << i;
        EXPECT_EQ(samples[i].message.getMessageTime().value, times[i]) << i;
        EXPECT_FALSE(samples[i].sample.isSkipped) << i;
    }
    EXPECT_TRUE(samples[0].sample.isKeyFrame);
    EXPECT_FALSE(samples[4].sample.isKeyFrame);
}

TEST_F(KZMSampleIteratorTest, MakesTagsOfTheSamples) {
    KzmTrack video = videoTrack();
    video.timescale = 90000;
    video.samples = {{raw({1, 2, 3}), 3600, true, 7200}, {raw({4, 5}), 3600, false, -3600}};
    const auto source = open(kzmFile({video, audioTrack()}));
    const auto samples = samplesOf(*source);
    ASSERT_EQ(samples.size(), 4U);
    EXPECT_EQ(samples[0].tag, hex("09 000008 00000000 000000 17 01 000050 010203 00000013"));
    EXPECT_EQ(samples[1].tag, hex("08 000003 00000000 000000 af 01 06 0000000e"));
    EXPECT_EQ(samples[2].tag, hex("08 000004 00001e00 000000 af 01 0708 0000000f"));
    EXPECT_EQ(samples[3].tag, hex("09 000007 00002800 000000 27 01 ffffd8 0405 00000012"));
}

TEST_F(KZMSampleIteratorTest, TakesWidthAndHeightAndRateFromTheDescription) {
    KzmTrack video = videoTrack();
    video.entries = {videoEntry("VP6F", {}, 0x145, 0xF3)};
    KzmTrack audio = audioTrack();
    audio.entries = {audioEntry("nmos", {}, 11025, 2, 2)};
    const auto samples = samplesOf(*open(kzmFile({video, audio})));
    EXPECT_EQ(samples.at(0).tag.slice(11, 2), hex("14 ac"));
    EXPECT_EQ(samples.at(1).tag.slice(11, 1), hex("67"));
}

TEST_F(KZMSampleIteratorTest, MakesDataTagsOfAmf) {
    EXPECT_EQ(samplesOf(*open(kzmFile({dataTrack("amf0")}))).at(0).tag,
              hex("12 000002 00000000 000000 0909 0000000d"));
    EXPECT_EQ(samplesOf(*open(kzmFile({dataTrack("amf3")}))).at(0).tag,
              hex("0f 000002 00000000 000000 0909 0000000d"));
}

TEST_F(KZMSampleIteratorTest, MakesTagsWithoutTypeOfText) {
    EXPECT_EQ(samplesOf(*open(kzmFile({dataTrack("tx3g")}))).at(0).tag,
              hex("00 000000 00000000 000000 0000000b"));
}

TEST_F(KZMSampleIteratorTest, BeginsANewPassWithEachIterator) {
    const auto source = open(kzmFile({videoTrack()}));
    const auto first = source->getSampleIterator();
    first->next();
    first->next();
    EXPECT_FALSE(first->hasNext());
    EXPECT_EQ(samplesOf(*source).size(), 2U);
}

TEST_F(KZMSampleIteratorTest, ReadsOnlySamplesThatAreAskedFor) {
    KzmTrack track = videoTrack();
    track.samples[1].data = pattern(5000, 1);
    // The movie stands in front here, so that the second sample can be cut off.
    const Bytes whole = fragmentedKzmFile({track});
    const auto source = open(whole.cutTo(whole.size() - 1));
    const auto samples = source->getSampleIterator();
    samples->next();
    EXPECT_EQ(samples->currentMessage().getSampleDataSize(), 3U);
    samples->next();
    EXPECT_EQ(codeThrownBy([&] { samples->currentMessage(); }), 1030U);
}

TEST_F(KZMSampleIteratorTest, PassesAnEmptyEditOnAsASkippedSample) {
    KzmTrack track = videoTrack();
    track.edits = {{500, -1}, {1000, 0}};
    const Bytes file = kzmFile({track});

    const auto edited = open(file, false);
    const auto samples = edited->getSampleIterator();
    ASSERT_TRUE(samples->hasNext());
    const FragmenterSample marker = samples->next();
    EXPECT_TRUE(marker.isSkipped);
    EXPECT_FALSE(marker.isKeyFrame);
    EXPECT_EQ(marker.time.value, 0U);
    const FragmenterSample first = samples->next();
    EXPECT_FALSE(first.isSkipped);
    EXPECT_TRUE(first.isKeyFrame);
    EXPECT_EQ(first.time.value, 500U);

    const auto plain = samplesOf(*open(file, true));
    ASSERT_EQ(plain.size(), 2U);
    EXPECT_EQ(plain[0].sample.time.value, 0U);
    EXPECT_FALSE(plain[0].sample.isSkipped);
}

TEST_F(KZMSampleIteratorTest, GivesNoSamplesPastTheDurationOfTheMovie) {
    EXPECT_EQ(samplesOf(*open(kzmFile({videoTrack()}, 40))).size(), 1U);
}

TEST_F(KZMSampleIteratorTest, GivesAllSamplesOfAFragmentedMovieWithoutADuration) {
    KzmTrack video = videoTrack();
    video.samples[0].composition = 80;
    const auto source = open(fragmentedKzmFile({video, audioTrack()}));
    const auto samples = samplesOf(*source);
    ASSERT_EQ(samples.size(), 4U);
    EXPECT_EQ(samples[0].tag, hex("09 000008 00000000 000000 17 01 000050 010203 00000013"));
    EXPECT_TRUE(samples[0].sample.isKeyFrame);
    EXPECT_EQ(samples[1].tag, hex("08 000003 00000000 000000 af 01 06 0000000e"));
    EXPECT_EQ(samples[2].sample.time.value, 30U);
    EXPECT_EQ(samples[3].sample.time.value, 40U);
}

TEST_F(KZMSampleIteratorTest, ToleratesStrayBytesAtTheEnd) {
    EXPECT_EQ(samplesOf(*open(kzmFile({videoTrack()}) + raw({1, 2, 3}))).size(), 2U);
}

}  // namespace
}  // namespace torvo::kzspkgutil
