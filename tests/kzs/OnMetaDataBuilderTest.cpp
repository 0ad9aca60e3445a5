#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

#include "kzs/OnMetaDataBuilder.h"
#include "kzs/base/ByteOrder.h"
#include "kzspkgutil/model/IMediaProperties.h"
#include "kzspkgutil/model/KZSTrackIterator.h"
#include "support/AmfBuilder.h"

using namespace torvo::kzspkgutil;
using namespace kz::test;
using torvo::kzs::buildOnMetaData;
using torvo::kzs::fourCc;

namespace {

class Recording final : public IMediaProperties {
public:
    MediaProperties getProperties() const override { return properties; }
    boost::shared_ptr<ITrackIterator> getTracks() const override {
        return boost::make_shared<KZSTrackIterator>(tracks);
    }

    KZSTrack& add(std::uint32_t handler) {
        tracks.push_back(boost::make_shared<KZSTrack>());
        tracks.back()->handler = handler;
        return *tracks.back();
    }

    KZSTrack& addVideo(std::uint32_t codec, const Bytes& extraData) {
        KZSTrack& track = add(fourCc("vide"));
        const auto info = boost::make_shared<VideoSampleDescInfo>();
        info->width = 640;
        info->height = 360;
        describe(track, codec, info, extraData);
        return track;
    }

    KZSTrack& addAudio(std::uint32_t codec) {
        KZSTrack& track = add(fourCc("soun"));
        const auto info = boost::make_shared<AudioSampleDescInfo>();
        info->sampleRate = 44000;
        info->channelCount = 2;
        describe(track, codec, info, {});
        return track;
    }

    MediaProperties properties;
    std::vector<boost::shared_ptr<KZSTrack>> tracks;

private:
    static void describe(KZSTrack& track, std::uint32_t codec,
                         const boost::shared_ptr<SampleDescInfo>& info, const Bytes& extraData) {
        const auto descriptor = boost::make_shared<KZSSampleDescriptor>();
        descriptor->info = info;
        descriptor->format = codec;
        descriptor->extraData.assign(extraData.begin(), extraData.end());
        track.descriptors.push_back(descriptor);
    }
};

const Bytes kBegin = amfString("onMetaData") + hex("08 00000000");
const Bytes kEnd = hex("000009");

Bytes built(const Recording& recording) {
    const auto bytes = buildOnMetaData(recording, false, 0.0);
    return bytesOf(bytes.data(), bytes.size());
}

Bytes number(const std::string& name, double value) { return amfName(name) + amfNumber(value); }

Bytes string(const std::string& name, const std::string& value) {
    return amfName(name) + amfString(value);
}

Bytes trackInfo(std::uint32_t count) { return amfName("trackinfo") + hex("0a") + u32(count); }

/// What a video track of `codec` without length gives when its configuration is unknown.
Bytes plainVideo(const std::string& codec) {
    return kBegin + number("width", 640) + number("height", 360) + string("videocodecid", codec) +
           trackInfo(1) + hex("03") + kEnd + kEnd;
}

bool hasProfile(const Bytes& extraData) {
    Recording recording;
    recording.addVideo(fourCc("avc1"), extraData);
    return built(recording).str().find("avcprofile") != std::string::npos;
}

/// A box with version 1, profile 77, compatibility 64, level 30 and nothing else.
const Bytes kAvcC = hex("0000000c 61766343 01 4d 40 1e");

}  // namespace

TEST(OnMetaDataBuilderTest, DescribesAnAudioOnlyRecording) {
    Recording recording;
    recording.properties.duration = 2500;
    KZSTrack& track = recording.addAudio(fourCc("mp4a"));
    track.duration = 2400;
    track.timescale = 1000;
    track.language = "und";
    EXPECT_EQ(built(recording), kBegin + number("duration", 2.5) + string("audiocodecid", "mp4a") +
                                    number("audiosamplerate", 44000) + number("audiochannels", 2) +
                                    trackInfo(1) + hex("03") + number("length", 2400) +
                                    number("timescale", 1000) + string("language", "und") + kEnd +
                                    kEnd);
}

TEST(OnMetaDataBuilderTest, DescribesVideoWithItsFrameRateAndConfiguration) {
    Recording recording;
    KZSTrack& track = recording.addVideo(fourCc("avc1"), text("junk") + kAvcC);
    track.duration = 2000;
    track.timescale = 1000;
    track.sampleCount = 60;
    EXPECT_EQ(built(recording), kBegin + number("width", 640) + number("height", 360) +
                                    string("videocodecid", "avc1") + number("avcprofile", 77) +
                                    number("avclevel", 30) + number("videoframerate", 30) +
                                    trackInfo(1) + hex("03") + number("length", 2000) +
                                    number("timescale", 1000) + kEnd + kEnd);
}

TEST(OnMetaDataBuilderTest, HasNoFrameRateWithoutACountOfSamples) {
    Recording recording;
    KZSTrack& track = recording.addVideo(fourCc("VP6F"), {});
    track.duration = 2000;
    track.timescale = 1000;
    EXPECT_EQ(built(recording).str().find("videoframerate"), std::string::npos);
}

TEST(OnMetaDataBuilderTest, EndsBehindTheDurationWithoutTracks) {
    Recording recording;
    recording.properties.duration = 3;
    recording.properties.timescale = 2;
    EXPECT_EQ(built(recording), kBegin + number("duration", 1.5) + kEnd);
}

TEST(OnMetaDataBuilderTest, TakesADurationWithoutTimescaleAsItIs) {
    Recording recording;
    recording.properties.duration = 3;
    recording.properties.timescale = 0;
    EXPECT_EQ(built(recording), kBegin + number("duration", 3) + kEnd);
}

TEST(OnMetaDataBuilderTest, GivesZerosForATrackWithoutDescription) {
    for (const std::uint32_t handler : {fourCc("vide"), fourCc("soun"), fourCc("meta")}) {
        Recording recording;
        recording.add(handler).timescale = 1000;
        EXPECT_EQ(built(recording),
                  kBegin + trackInfo(1) + hex("03") + number("timescale", 1000) + kEnd + kEnd);
    }
}

TEST(OnMetaDataBuilderTest, PassesOverOtherHandlers) {
    Recording recording;
    recording.add(fourCc("hint")).timescale = 1000;
    EXPECT_EQ(built(recording), kBegin + kEnd);
}

TEST(OnMetaDataBuilderTest, LooksForTheConfigurationOfEachAvcCodec) {
    for (const char* codec : {"H264", "h264", "avc1"}) {
        Recording recording;
        std::uint32_t code = 0;
        for (const char* c = codec; *c != '\0'; ++c)
            code = code * 256 + static_cast<unsigned char>(*c);
        recording.addVideo(code, kAvcC);
        EXPECT_NE(built(recording).str().find("avcprofile"), std::string::npos) << codec;
    }
    Recording other;
    other.addVideo(fourCc("VP6F"), kAvcC);
    EXPECT_EQ(built(other), plainVideo("VP6F"));
}

TEST(OnMetaDataBuilderTest, CountsMp4vAmongTheAvcCodecs) {
    Recording recording;
    recording.addVideo(fourCc("mp4v"), kAvcC);
    EXPECT_NE(built(recording).str().find("avcprofile"), std::string::npos);
}

TEST(OnMetaDataBuilderTest, GivesNoProfileWithoutAConfiguration) {
    Recording recording;
    recording.addVideo(fourCc("avc1"), {});
    EXPECT_EQ(built(recording), plainVideo("avc1"));
}

TEST(OnMetaDataBuilderTest, TakesAConfigurationOnlyFromABoxThatFits) {
    EXPECT_TRUE(hasProfile(kAvcC));
    EXPECT_TRUE(hasProfile(kAvcC + hex("ff")));
    EXPECT_FALSE(hasProfile(kAvcC.cutTo(11)));
    EXPECT_FALSE(hasProfile(kAvcC.patched(0, hex("0000000d"))));
    EXPECT_FALSE(hasProfile(kAvcC.patched(0, hex("ffffffff"))));
    EXPECT_FALSE(hasProfile(kAvcC.patched(0, hex("0000000b"))));
    EXPECT_FALSE(hasProfile(kAvcC.patched(0, hex("00000007"))));
    EXPECT_FALSE(hasProfile(kAvcC.patched(0, hex("00000000"))));
    EXPECT_FALSE(hasProfile(kAvcC.slice(4, 8)));
    EXPECT_FALSE(hasProfile(kAvcC.slice(1, 11)));
    for (std::size_t size = 0; size < 12; ++size) EXPECT_FALSE(hasProfile(kAvcC.cutTo(size)));
}

TEST(OnMetaDataBuilderTest, PassesOverLettersWithoutRoomForASizeInFront) {
    EXPECT_TRUE(hasProfile(text("avcC") + kAvcC));
    EXPECT_TRUE(hasProfile(text("a") + kAvcC));
}

TEST(OnMetaDataBuilderTest, LetsALaterVideoTrackOverwriteTheConfiguration) {
    Recording recording;
    recording.addVideo(fourCc("avc1"), kAvcC);
    recording.addVideo(fourCc("avc1"), hex("0000000c 61766343 01 64 00 33"));
    const std::string bytes = built(recording).str();
    EXPECT_NE(bytes.find((number("avcprofile", 100) + number("avclevel", 51)).str()),
              std::string::npos);
    EXPECT_EQ(bytes.find(number("avcprofile", 77).str()), std::string::npos);
}

TEST(OnMetaDataBuilderTest, NeverWritesTheAacObjectType) {
    Recording recording;
    recording.addAudio(fourCc("mp4a"));
    EXPECT_EQ(built(recording).str().find("aacaot"), std::string::npos);
}

TEST(OnMetaDataBuilderTest, CarriesATimeCodeOffset) {
    const Recording recording;
    const auto bytes = buildOnMetaData(recording, true, 1.0);
    EXPECT_EQ(bytesOf(bytes.data(), bytes.size()), kBegin + amfName("smpteTimeInfo") + hex("03") +
                                                       number("smpteOffset", 1) + kEnd + kEnd);
}
