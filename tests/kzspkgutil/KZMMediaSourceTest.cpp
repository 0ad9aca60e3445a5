#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "KzmFileBuilder.h"
#include "kzs/base/ByteOrder.h"
#include "kzs/base/FileStream.h"
#include "kzspkgutil/KZMMediaSource.h"
#include "kzspkgutil/KZMMediaSourceProvider.h"
#include "kzspkgutil/model/KZSPkgUtilException.h"
#include "support/IsoBuilder.h"
#include "support/TempDir.h"
#include "support/ThrownCode.h"

namespace torvo::kzspkgutil {
namespace {

using kz::test::box;
using kz::test::codeThrownBy;
using kz::test::hex;
using kz::test::pattern;
using kz::test::raw;
using kz::test::text;
using kz::test::u32;
using kzs::fourCc;
using kzs::FragmenterSample;
using test::audioEntry;
using test::Bytes;
using test::fragmentedKzmFile;
using test::kzmFile;
using test::KzmTrack;
using test::plainEntry;
using test::videoEntry;

KzmTrack videoTrack(const std::string& format = "avc1") {
    KzmTrack track;
    track.handler = "vide";
    track.entries = {videoEntry(format)};
    track.samples = {{raw({1, 2, 3}), 40, true}, {raw({4, 5}), 40, false}};
    return track;
}

KzmTrack audioTrack(const std::string& format = "mp4a") {
    KzmTrack track;
    track.handler = "soun";
    track.entries = {audioEntry(format)};
    track.samples = {{raw({6}), 30, false}, {raw({7, 8}), 30, false}};
    return track;
}

KzmTrack dataTrack(const std::string& format = "amf0") {
    KzmTrack track;
    track.handler = "meta";
    track.entries = {plainEntry(format)};
    track.samples = {{raw({9, 9}), 50, false}};
    return track;
}

class KZMSourceTest : public testing::Test {
protected:
    std::unique_ptr<IMediaSource> open(const Bytes& file, bool ignoreEdits = true) {
        KZMMediaSourceProvider provider(ignoreEdits);
        return provider.createSource(context_, folder_.write("in.mp4", file), kFlags);
    }

    bool canOpen(const Bytes& file) {
        return KZMMediaSourceProvider(true).canOpen(folder_.write("in.mp4", file), kFlags);
    }

    static std::vector<boost::shared_ptr<KZSTrack>> tracksOf(const IMediaSource& source) {
        std::vector<boost::shared_ptr<KZSTrack>> all;
        const auto tracks = source.getTracks();
        while (tracks->hasNext()) all.push_back(tracks->next());
        return all;
    }

    struct Seen {
        FragmenterSample sample;
        TCMessage message;
        Bytes tag;
    };

    static std::vector<Seen> samplesOf(IMediaSource& source) {
        std::vector<Seen> all;
        const auto samples = source.getSampleIterator();
        while (samples->hasNext()) {
            Seen seen;
            seen.sample = samples->next();
            seen.message = samples->currentMessage();
            seen.tag = kz::test::bytesOf(seen.message.getTag(), seen.message.getTagSize());
            all.push_back(seen);
        }
        return all;
    }

    static constexpr std::uint32_t kFlags = kzs::openFlagsFor(false, false);
    kz::test::TempDir folder_;
    RefCountedMemoryArena arena_;
    PackagerContext context_{arena_};
};

// --- recognising

using KZMMediaSourceProviderTest = KZMSourceTest;

TEST_F(KZMMediaSourceProviderTest, KnowsAFileByItsFirstBox) {
    EXPECT_TRUE(canOpen(box("ftyp", text("isom"))));
    EXPECT_TRUE(canOpen(box("mdat")));
    EXPECT_TRUE(canOpen(box("moov")));
    EXPECT_FALSE(canOpen(box("moof")));
    EXPECT_FALSE(canOpen(box("skip")));
}

TEST_F(KZMMediaSourceProviderTest, RefusesAFileThatStartsWithAFreeBox) {
    EXPECT_FALSE(canOpen(box("free") + kzmFile({videoTrack()})));
}

TEST_F(KZMMediaSourceProviderTest, RefusesFilesThatAreTooShortForABox) {
    EXPECT_FALSE(canOpen(Bytes()));
    EXPECT_FALSE(canOpen(box("ftyp").cutTo(7)));
}

TEST_F(KZMMediaSourceProviderTest, FailsOnAFileThatIsNotThere) {
    EXPECT_EQ(
        codeThrownBy([&] { KZMMediaSourceProvider(true).canOpen(folder_ / "missing", kFlags); }),
        6U);
}

// --- choosing tracks

using KZMMediaSourceTest = KZMSourceTest;

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

// --- what it tells

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

// --- samples

TEST_F(KZMMediaSourceTest, GivesTheSamplesOfAllTracksByTime) {
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

TEST_F(KZMMediaSourceTest, MakesTagsOfTheSamples) {
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

TEST_F(KZMMediaSourceTest, TakesWidthAndHeightAndRateFromTheDescription) {
    KzmTrack video = videoTrack();
    video.entries = {videoEntry("VP6F", {}, 0x145, 0xF3)};
    KzmTrack audio = audioTrack();
    audio.entries = {audioEntry("nmos", {}, 11025, 2, 2)};
    const auto samples = samplesOf(*open(kzmFile({video, audio})));
    EXPECT_EQ(samples.at(0).tag.slice(11, 2), hex("14 ac"));
    EXPECT_EQ(samples.at(1).tag.slice(11, 1), hex("67"));
}

TEST_F(KZMMediaSourceTest, MakesDataTagsOfAmf) {
    EXPECT_EQ(samplesOf(*open(kzmFile({dataTrack("amf0")}))).at(0).tag,
              hex("12 000002 00000000 000000 0909 0000000d"));
    EXPECT_EQ(samplesOf(*open(kzmFile({dataTrack("amf3")}))).at(0).tag,
              hex("0f 000002 00000000 000000 0909 0000000d"));
}

TEST_F(KZMMediaSourceTest, MakesTagsWithoutTypeOfText) {
    EXPECT_EQ(samplesOf(*open(kzmFile({dataTrack("tx3g")}))).at(0).tag,
              hex("00 000000 00000000 000000 0000000b"));
}

TEST_F(KZMMediaSourceTest, BeginsANewPassWithEachIterator) {
    const auto source = open(kzmFile({videoTrack()}));
    const auto first = source->getSampleIterator();
    first->next();
    first->next();
    EXPECT_FALSE(first->hasNext());
    EXPECT_EQ(samplesOf(*source).size(), 2U);
}

TEST_F(KZMMediaSourceTest, ReadsOnlySamplesThatAreAskedFor) {
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

TEST_F(KZMMediaSourceTest, PassesAnEmptyEditOnAsASkippedSample) {
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

TEST_F(KZMMediaSourceTest, GivesNoSamplesPastTheDurationOfTheMovie) {
    EXPECT_EQ(samplesOf(*open(kzmFile({videoTrack()}, 40))).size(), 1U);
}

TEST_F(KZMMediaSourceTest, GivesAllSamplesOfAFragmentedMovieWithoutADuration) {
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

TEST_F(KZMMediaSourceTest, ToleratesStrayBytesAtTheEnd) {
    EXPECT_EQ(samplesOf(*open(kzmFile({videoTrack()}) + raw({1, 2, 3}))).size(), 2U);
}

TEST_F(KZMMediaSourceTest, RefusesATimescaleOf0) {
    KzmTrack track = videoTrack();
    track.timescale = 0;
    EXPECT_EQ(codeThrownBy([&] { open(kzmFile({track})); }), 10U);
}

}  // namespace
}  // namespace torvo::kzspkgutil
