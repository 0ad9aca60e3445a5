#include <gtest/gtest.h>

#include "KZMSourceFixture.h"
#include "kzs/base/ByteOrder.h"
#include "kzspkgutil/model/KZSPkgUtilException.h"
#include "support/IsoBuilder.h"
#include "support/ThrownCode.h"

namespace torvo::kzspkgutil {
namespace {

using kz::test::box;
using kz::test::codeThrownBy;
using kz::test::hex;
using kz::test::raw;
using kz::test::text;
using kz::test::u32;
using kzs::fourCc;
using test::audioEntry;
using test::audioTrack;
using test::dataTrack;
using test::fragmentedKzmFile;
using test::kzmFile;
using test::KzmTrack;
using test::plainEntry;
using test::videoEntry;
using test::videoTrack;

using KZMMediaSourceTest = test::KZMSourceFixture;

TEST_F(KZMMediaSourceTest, TakesOneTrackOfEachKindInTheOrderOfTheFile) {
    const auto source = open(kzmFile({dataTrack(), audioTrack(), videoTrack()}));
    const auto tracks = tracksOf(*source);
    ASSERT_EQ(tracks.size(), 3U);
    EXPECT_EQ(tracks[0]->handler, fourCc("meta"));
    EXPECT_EQ(tracks[1]->handler, fourCc("soun"));
    EXPECT_EQ(tracks[2]->handler, fourCc("vide"));
}

TEST_F(KZMMediaSourceTest, IsAudioOnlyWhenTheVideoIsOfAnUnknownFormat) {
    const auto source = open(kzmFile({videoTrack("hvc1"), audioTrack()}));
    const auto tracks = tracksOf(*source);
    ASSERT_EQ(tracks.size(), 1U);
    EXPECT_EQ(tracks[0]->handler, fourCc("soun"));
    EXPECT_EQ(samplesOf(*source).size(), 2U);
}

TEST_F(KZMMediaSourceTest, TakesTheSecondVideoTrackWhenTheFirstIsOfAnUnknownFormat) {
    const auto source = open(kzmFile({videoTrack("hvc1"), videoTrack("VP6F")}));
    const auto tracks = tracksOf(*source);
    ASSERT_EQ(tracks.size(), 1U);
    EXPECT_EQ(tracks[0]->trackId, 2U);
    EXPECT_EQ(tracks[0]->descriptors.front()->format, fourCc("VP6F"));
}

TEST_F(KZMMediaSourceTest, TakesTheFirstOfTwoVideoTracks) {
    const auto source = open(kzmFile({videoTrack("avc1"), videoTrack("VP6F")}));
    const auto tracks = tracksOf(*source);
    ASSERT_EQ(tracks.size(), 1U);
    EXPECT_EQ(tracks[0]->trackId, 1U);
    EXPECT_EQ(samplesOf(*source).size(), 2U);
}

TEST_F(KZMMediaSourceTest, PassesOverOtherHandlers) {
    KzmTrack subtitles = dataTrack("tx3g");
    subtitles.handler = "sbtl";
    EXPECT_EQ(tracksOf(*open(kzmFile({subtitles, audioTrack()}))).size(), 1U);
}

TEST_F(KZMMediaSourceTest, RefusesAFileOfAHintTrackAlone) {
    KzmTrack hint;
    hint.handler = "hint";
    hint.entries = {plainEntry("rtmp", kz::test::fill(6, 0))};
    try {
        open(kzmFile({hint}));
        FAIL() << "a file of a hint track was opened";
    } catch (const NoSupportedTracksException& failure) {
        EXPECT_EQ(failure.path(), folder_ / "in.mp4");
        EXPECT_EQ(failure.what(),
                  "Error (3) - No supported tracks in file '" + (folder_ / "in.mp4") + "'");
    }
}

TEST_F(KZMMediaSourceTest, RefusesAFileWithoutAMovie) {
    EXPECT_EQ(codeThrownBy([&] { open(box("ftyp", text("isom"), u32(0))); }), 6U);
}

TEST_F(KZMMediaSourceTest, SupportsTwentyOneFormats) {
    for (const char* format :
         {"tx3g", "amf0", "amf3", "H264", "h264", "avc1", "mp4v", "H263", "VP6F", "VP6A", ".mp3",
          "mp4a", "nmos", "spex", "ac-3", "ec-3", "dtsc", "dtsh", "dtsl", "dtse", "text"}) {
        EXPECT_EQ(tracksOf(*open(kzmFile({dataTrack(format)}))).size(), 1U) << format;
    }
    for (const char* format : {"opus", "Opus", "hvc1", "encv", "jpeg", "TX3G"}) {
        EXPECT_THROW(open(kzmFile({dataTrack(format)})), NoSupportedTracksException) << format;
    }
}

TEST_F(KZMMediaSourceTest, GoesByTheFirstDescriptionAlone) {
    KzmTrack track = videoTrack("avc1");
    track.entries.push_back(videoEntry("hvc1"));
    track.samples[1].description = 2;
    const auto source = open(kzmFile({track}));
    const auto tracks = tracksOf(*source);
    ASSERT_EQ(tracks.size(), 1U);
    ASSERT_EQ(tracks[0]->descriptors.size(), 2U);
    EXPECT_EQ(tracks[0]->descriptors[1]->format, fourCc("hvc1"));
    // The sample of the other description becomes a tag that nobody takes up.
    const auto samples = samplesOf(*source);
    ASSERT_EQ(samples.size(), 2U);
    EXPECT_EQ(samples[0].tag.front(), 9);
    EXPECT_EQ(samples[1].tag, hex("00 000000 00002800 000000 0000000b"));

    track.entries = {videoEntry("hvc1"), videoEntry("avc1")};
    EXPECT_THROW(open(kzmFile({track})), NoSupportedTracksException);
}

TEST_F(KZMMediaSourceTest, TellsThePropertiesOfTheMovie) {
    const auto plain = open(kzmFile({videoTrack()}, 12345))->getProperties();
    EXPECT_FALSE(plain.isFragmented);
    EXPECT_EQ(plain.duration, 12345U);
    EXPECT_EQ(plain.timescale, 1000U);
    EXPECT_EQ(plain.rate, 1.0F);
    EXPECT_EQ(plain.volume, 1.0F);

    const auto fragmented = open(fragmentedKzmFile({videoTrack()}))->getProperties();
    EXPECT_TRUE(fragmented.isFragmented);
    EXPECT_EQ(fragmented.duration, 0U);
}

TEST_F(KZMMediaSourceTest, DescribesItsTracks) {
    KzmTrack stored = videoTrack();
    stored.timescale = 90000;
    stored.width = 640;
    stored.height = 360;
    stored.language = "deu";
    stored.entries = {videoEntry("avc1", hex("0000000a 61766343 0142"), 640, 360),
                      videoEntry("avc1", hex("00000009 61766343 01"))};
    stored.edits = {{500, -1}, {2000, 0}};
    const auto source = open(kzmFile({stored}, 4000));
    const KZSTrack& track = *tracksOf(*source).at(0);
    EXPECT_EQ(track.handler, fourCc("vide"));
    EXPECT_EQ(track.language, "deu");
    EXPECT_EQ(track.trackId, 1U);
    EXPECT_EQ(track.duration, 360000U);  // 4 s in 90000ths, rescaled once
    EXPECT_EQ(track.width, 640.0F);
    EXPECT_EQ(track.height, 360.0F);
    EXPECT_EQ(track.volume, 1.0F);
    EXPECT_EQ(track.timescale, 90000U);
    EXPECT_EQ(track.trackFlags, 7U);
    EXPECT_EQ(track.descriptionCount, 2U);
    EXPECT_EQ(track.emptyEditCount, 1U);
    EXPECT_EQ(track.largestDescriptionSize, 10U);
    EXPECT_EQ(track.sampleCount, 2U);
    ASSERT_EQ(track.descriptors.size(), 2U);
    EXPECT_EQ(track.descriptors[0]->extraData, hex("0000000a 61766343 0142"));
    const auto& info = dynamic_cast<const VideoSampleDescInfo&>(*track.descriptors[0]->info);
    EXPECT_EQ(info.extraDataSize, 10U);
    EXPECT_EQ(info.width, 640U);
    EXPECT_EQ(info.depth, 24);
}

TEST_F(KZMMediaSourceTest, DescribesAudio) {
    KzmTrack stored = audioTrack();
    stored.entries = {audioEntry("mp4a", raw({1, 2, 3}), 22050, 1, 16)};
    const auto source = open(kzmFile({stored}));
    const auto track = tracksOf(*source).at(0);
    const auto& info = dynamic_cast<const AudioSampleDescInfo&>(*track->descriptors.at(0)->info);
    EXPECT_EQ(info.sampleRate, 22050.0F);
    EXPECT_EQ(info.channelCount, 1U);
    EXPECT_EQ(info.sampleSize, 16U);
    EXPECT_EQ(track->descriptors.at(0)->extraData, raw({1, 2, 3}));
}

TEST_F(KZMMediaSourceTest, RefusesATimescaleOf0) {
    KzmTrack track = videoTrack();
    track.timescale = 0;
    EXPECT_EQ(codeThrownBy([&] { open(kzmFile({track})); }), 10U);
}

}  // namespace
}  // namespace torvo::kzspkgutil
