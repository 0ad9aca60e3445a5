#include <sstream>

#include <gtest/gtest.h>

#include "kvl/amfmessage/AMF0Base.h"
#include "kzs/OnMetaDataRecord.h"
#include "kzs/OnMetaDataWriter.h"
#include "kzs/base/ByteOrder.h"
#include "support/AmfBuilder.h"

using namespace torvo::kzs;
using namespace kz::test;

namespace {

const Bytes kBegin = amfString("onMetaData") + hex("08 00000000");
const Bytes kEnd = hex("000009");

Bytes written(const OnMetaDataRecord& record) {
    std::ostringstream stream;
    writeOnMetaData(stream, record);
    return bytesOf(stream.str());
}

Bytes number(const std::string& name, double value) { return amfName(name) + amfNumber(value); }

Bytes string(const std::string& name, const std::string& value) {
    return amfName(name) + amfString(value);
}

Bytes trackInfo(std::uint32_t count) { return amfName("trackinfo") + hex("0a") + u32(count); }

std::shared_ptr<MetaVideoTrackInfo> video() {
    auto track = std::make_shared<MetaVideoTrackInfo>();
    track->setCodec(fourCc("avc1"));
    track->setLength(10000);
    track->setTimescale(1000);
    track->setLanguage("eng");
    track->width = 640;
    track->height = 360;
    track->sampleCount = 250;
    return track;
}

std::shared_ptr<MetaAudioTrackInfo> audio() {
    auto track = std::make_shared<MetaAudioTrackInfo>();
    track->setCodec(fourCc("mp4a"));
    track->setLength(9000);
    track->setTimescale(44100);
    track->sampleRate = 44100;
    track->channels = 2;
    return track;
}

}  // namespace

TEST(OnMetaDataWriterTest, EndsRightBehindTheDurationWithoutTracks) {
    OnMetaDataRecord record;
    record.duration = 1.5;
    EXPECT_EQ(written(record), hexTable(R"(
         0  02        string
         1  000a      length
         3  6f6e4d65746144617461  onMetaData
        13  08        array
        14  00000000  count
        18  0008      length
        20  6475726174696f6e  duration
        28  00        number
        29  3ff8000000000000  1.5
        37  0000      empty name
        39  09        end
    )"));
}

TEST(OnMetaDataWriterTest, LeavesOutADurationOfZero) {
    EXPECT_EQ(written(OnMetaDataRecord()), kBegin + kEnd);
}

TEST(OnMetaDataWriterTest, WritesCodecsBeforeRatesBeforeTrackInfo) {
    OnMetaDataRecord record;
    record.duration = 10;
    record.tracks = {video(), audio()};
    record.hasAvc = true;
    record.avcProfile = 100;
    record.avcLevel = 31;
    record.hasAac = true;
    EXPECT_EQ(written(record),
              kBegin + number("duration", 10) + number("width", 640) + number("height", 360) +
                  string("videocodecid", "avc1") + string("audiocodecid", "mp4a") +
                  number("avcprofile", 100) + number("avclevel", 31) +
                  number("videoframerate", 25) + number("audiosamplerate", 44100) +
                  number("audiochannels", 2) + trackInfo(2) + hex("03") + number("length", 10000) +
                  number("timescale", 1000) + string("language", "eng") + kEnd + hex("03") +
                  number("length", 9000) + number("timescale", 44100) + kEnd + kEnd);
}

TEST(OnMetaDataWriterTest, WritesCodecsAsText) {
    OnMetaDataRecord record;
    const auto track = std::make_shared<MetaVideoTrackInfo>();
    track->setCodec(0x56503641);
    record.tracks = {track};
    EXPECT_EQ(written(record),
              kBegin + string("videocodecid", "VP6A") + trackInfo(1) + hex("03") + kEnd + kEnd);
}

TEST(OnMetaDataWriterTest, LeavesOutTheLanguageOfATrackWithoutOne) {
    OnMetaDataRecord record;
    record.tracks = {std::make_shared<MetaDataTrackInfo>()};
    record.tracks[0]->setLength(5);
    EXPECT_EQ(written(record),
              kBegin + trackInfo(1) + hex("03") + number("length", 5) + kEnd + kEnd);
}

TEST(OnMetaDataWriterTest, LeavesOutTheFrameRateUnlessAllItsPartsAreKnown) {
    for (int missing = 0; missing < 3; ++missing) {
        OnMetaDataRecord record;
        const auto track = video();
        if (missing == 0) track->sampleCount = 0;
        if (missing == 1) track->setTimescale(0);
        if (missing == 2) track->setLength(0);
        record.tracks = {track};
        EXPECT_EQ(written(record).str().find("videoframerate"), std::string::npos) << missing;
    }
}

TEST(OnMetaDataWriterTest, RepeatsTheNamesOfPicturesForEachVideoTrack) {
    OnMetaDataRecord record;
    const auto first = std::make_shared<MetaVideoTrackInfo>();
    first->width = 1;
    const auto second = std::make_shared<MetaVideoTrackInfo>();
    second->width = 2;
    record.tracks = {first, second};
    EXPECT_EQ(written(record), kBegin + number("width", 1) + number("width", 2) + trackInfo(2) +
                                   hex("03") + kEnd + hex("03") + kEnd + kEnd);
}

TEST(OnMetaDataWriterTest, WritesCodecDetailsOnlyWhenTheyAreKnown) {
    OnMetaDataRecord record;
    record.avcProfile = 100;
    record.aacObjectType = 2;
    EXPECT_EQ(written(record), kBegin + kEnd);
    record.hasAvc = true;
    record.hasAac = true;
    EXPECT_EQ(written(record), kBegin + number("avcprofile", 100) + number("aacaot", 2) + kEnd);
}

TEST(OnMetaDataWriterTest, WritesATimeCodeOffsetAboveZero) {
    OnMetaDataRecord record;
    record.smpteOffset = 3;
    EXPECT_EQ(written(record), kBegin + kEnd);
    record.hasSmpte = true;
    EXPECT_EQ(written(record), kBegin + amfName("smpteTimeInfo") + hex("03") +
                                   number("smpteOffset", 3) + kEnd + kEnd);
    record.smpteOffset = 0;
    EXPECT_EQ(written(record), kBegin + kEnd);
}

TEST(OnMetaDataWriterTest, WritesCustomDataAsAnObjectAtTheEnd) {
    OnMetaDataRecord record;
    record.customData = {{"b", "1"}, {"a", ""}};
    EXPECT_EQ(written(record), kBegin + amfName("custdef") + hex("03") + string("b", "1") +
                                   string("a", "") + kEnd + kEnd);
}

TEST(OnMetaDataWriterTest, RefusesACustomNameThatIsTooLong) {
    OnMetaDataRecord record;
    record.customData = {{std::string(65536, 'n'), "v"}};
    std::ostringstream stream;
    EXPECT_THROW(writeOnMetaData(stream, record), kvl::amfmessage::WriteException);
    EXPECT_EQ(stream.exceptions(), std::ios::goodbit);
}

TEST(OnMetaDataWriterTest, ThrowsWhenTheStreamFailsAndPutsItsSettingBack) {
    struct FullBuffer : std::streambuf {};
    FullBuffer buffer;
    std::ostream stream(&buffer);
    EXPECT_THROW(writeOnMetaData(stream, OnMetaDataRecord()), std::ios_base::failure);
    EXPECT_EQ(stream.exceptions(), std::ios::goodbit);
}
