#include <limits>

#include <boost/smart_ptr/shared_ptr.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "kzs/base/ByteOrder.h"
#include "kzspkgutil/FLVFile.h"
#include "kzspkgutil/FLVMediaSource.h"
#include "support/AmfBuilder.h"

namespace torvo::kzspkgutil {
namespace {

using kzs::fourCc;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using namespace kz::test;

using TrackPtr = boost::shared_ptr<KZSTrack>;

std::vector<TrackPtr> tracksOf(const IMediaSource& source) {
    std::vector<TrackPtr> out;
    const auto iterator = source.getTracks();
    while (iterator->hasNext()) out.push_back(iterator->next());
    return out;
}

std::uint64_t durationOf(const Bytes& content) {
    FLVFile file(content);
    return file.open()->getProperties().duration;
}

std::vector<std::uint32_t> handlersOf(const std::vector<FlvTag>& tags) {
    FLVFile file(tags);
    std::vector<std::uint32_t> out;
    for (const TrackPtr& track : tracksOf(*file.open())) out.push_back(track->handler);
    return out;
}

/// Width and height of the video track, which one AVC tag at the end makes.
std::pair<float, float> sizeIn(std::vector<FlvTag> tags) {
    tags.push_back(avcConfig(0));
    FLVFile file(tags);
    const auto tracks = tracksOf(*file.open());
    return {tracks.at(0)->width, tracks.at(0)->height};
}

const AudioSampleDescInfo& audioInfo(const TrackPtr& track) {
    return dynamic_cast<const AudioSampleDescInfo&>(*track->descriptors.at(0)->info);
}

const VideoSampleDescInfo& videoInfo(const TrackPtr& track) {
    return dynamic_cast<const VideoSampleDescInfo&>(*track->descriptors.at(0)->info);
}

constexpr std::pair<float, float> kNoSize{0.0F, 0.0F};

TEST(FLVMediaSourceTest, TellsThePropertiesOfTheRecording) {
    FLVFile file({onMetaDataTag(320, 180), avcConfig(0), mp3Frame(1234, raw({1}))});
    const MediaProperties properties = file.open()->getProperties();
    EXPECT_TRUE(properties.isFragmented);
    EXPECT_EQ(properties.duration, 1234U);
    EXPECT_EQ(properties.timescale, 1000U);
    EXPECT_EQ(properties.rate, 1.0F);
    EXPECT_EQ(properties.volume, 1.0F);
}

TEST(FLVMediaSourceTest, DescribesTheVideoTrack) {
    FLVFile file({onMetaDataTag(320.9, 180.5), avcConfig(0), avcFrame(900, true, raw({1}))});
    const auto source = file.open();
    const auto tracks = tracksOf(*source);
    ASSERT_EQ(tracks.size(), 1U);
    const KZSTrack& track = *tracks[0];
    EXPECT_EQ(track.handler, fourCc("vide"));
    EXPECT_EQ(track.language, "eng");
    EXPECT_EQ(track.trackId, 0U);
    EXPECT_EQ(track.duration, 900U);
    EXPECT_EQ(track.width, 320.9F);
    EXPECT_EQ(track.height, 180.5F);
    EXPECT_EQ(track.volume, 0.0F);
    EXPECT_EQ(track.timescale, 1000U);
    EXPECT_EQ(track.trackFlags, 1U);
    EXPECT_EQ(track.descriptionCount, 1U);
    EXPECT_EQ(track.emptyEditCount, 0U);
    EXPECT_EQ(track.largestDescriptionSize, 0U);
    EXPECT_EQ(track.sampleCount, 0U);
    ASSERT_EQ(track.descriptors.size(), 1U);
    EXPECT_EQ(track.descriptors[0]->format, fourCc("avc1"));
    EXPECT_THAT(track.descriptors[0]->extraData, IsEmpty());
    EXPECT_THAT(track.descriptors[0]->protectionData, IsEmpty());
    const VideoSampleDescInfo& info = videoInfo(tracks[0]);
    EXPECT_EQ(info.format, fourCc("avc1"));
    EXPECT_EQ(info.extraDataSize, 0U);
    EXPECT_EQ(info.handler, fourCc("vide"));
    EXPECT_EQ(info.width, 320U);
    EXPECT_EQ(info.height, 180U);
    EXPECT_EQ(info.horizontalResolution, 72.0F);
    EXPECT_EQ(info.verticalResolution, 72.0F);
    EXPECT_EQ(info.frameCount, 1U);
    EXPECT_EQ(info.depth, 24U);
    EXPECT_THAT(source->getFilter().types(), ElementsAre(9));
}

TEST(FLVMediaSourceTest, DescribesTheAudioTrackOfAFileWithoutVideo) {
    FLVFile file(flvFile({aacConfig(0), aacFrame(700, raw({1}))}, 5));
    const auto source = file.open();
    const auto tracks = tracksOf(*source);
    ASSERT_EQ(tracks.size(), 1U);
    const KZSTrack& track = *tracks[0];
    EXPECT_EQ(track.handler, fourCc("soun"));
    EXPECT_EQ(track.language, "eng");
    EXPECT_EQ(track.trackId, 0U);
    EXPECT_EQ(track.duration, 700U);
    EXPECT_EQ(track.width, 0.0F);
    EXPECT_EQ(track.height, 0.0F);
    EXPECT_EQ(track.volume, 1.0F);
    EXPECT_EQ(track.timescale, 1000U);
    EXPECT_EQ(track.trackFlags, 1U);
    EXPECT_EQ(track.descriptionCount, 1U);
    EXPECT_EQ(track.emptyEditCount, 0U);
    EXPECT_EQ(track.sampleCount, 0U);
    EXPECT_EQ(audioInfo(tracks[0]).format, fourCc("mp4a"));
    EXPECT_EQ(audioInfo(tracks[0]).handler, fourCc("soun"));
    EXPECT_THAT(source->getFilter().types(), ElementsAre(8));
}

TEST(FLVMediaSourceTest, VideoStandsBeforeAudioWhateverTheFilesOrder) {
    FLVFile file({mp3Frame(0, raw({1})), avcConfig(0), mp3Frame(10, raw({1}))});
    const auto source = file.open();
    EXPECT_EQ(tracksOf(*source).at(0)->handler, fourCc("vide"));
    EXPECT_EQ(tracksOf(*source).at(1)->handler, fourCc("soun"));
    EXPECT_THAT(source->getFilter().types(), ElementsAre(9, 8));
}

TEST(FLVMediaSourceTest, AudioIsDescribedByTheFieldsOfItsFirstByte) {
    struct Case {
        int rateIndex;
        bool is16Bit;
        bool isStereo;
        float rate;
        std::uint32_t size;
        std::uint32_t channels;
    };
    for (const Case& c : {Case{0, true, true, 5500, 16, 2}, Case{1, false, true, 11000, 8, 2},
                          Case{2, true, false, 22000, 16, 1}, Case{3, false, false, 44000, 8, 1}}) {
        FLVFile file({audioTag(0, 2, raw({1}), c.rateIndex, c.is16Bit, c.isStereo)});
        const auto tracks = tracksOf(*file.open());
        const AudioSampleDescInfo& info = audioInfo(tracks.at(0));
        EXPECT_EQ(info.format, fourCc(".mp3"));
        EXPECT_EQ(info.sampleRate, c.rate);
        EXPECT_EQ(info.sampleSize, c.size);
        EXPECT_EQ(info.channelCount, c.channels);
    }
}

TEST(FLVMediaSourceTest, AudioIsDescribedByTheTagBehindTheFirstVideoTag) {
    FLVFile file({speexFrame(0, raw({1})), flvTag(9, 0, Bytes()), speexFrame(0, raw({1})),
                  avcConfig(0), flvTag(8, 1, Bytes()), mp3Frame(10, raw({1}))});
    EXPECT_EQ(audioInfo(tracksOf(*file.open()).at(1)).format, fourCc(".mp3"));
}

TEST(FLVMediaSourceTest, AudioThatEndsBeforeTheFirstVideoTagIsATrackWithoutDescription) {
    FLVFile file({mp3Frame(0, raw({1})), avcConfig(0)});
    const auto tracks = tracksOf(*file.open());
    ASSERT_EQ(tracks.size(), 2U);
    EXPECT_THAT(tracks[1]->descriptors, IsEmpty());
}

TEST(FLVMediaSourceTest, VideoWhoseTagsAreAllEmptyIsATrackWithoutDescription) {
    FLVFile file({flvTag(9, 0, Bytes()), flvTag(9, 40, Bytes())});
    const auto source = file.open();
    const auto tracks = tracksOf(*source);
    ASSERT_EQ(tracks.size(), 1U);
    EXPECT_EQ(tracks[0]->handler, fourCc("vide"));
    EXPECT_EQ(tracks[0]->descriptionCount, 1U);
    EXPECT_THAT(tracks[0]->descriptors, IsEmpty());
    EXPECT_THAT(source->getFilter().types(), ElementsAre(9));
}

TEST(FLVMediaSourceTest, TracksComeFromTheTagsAndNotFromTheHeader) {
    EXPECT_THAT(handlersOf({mp3Frame(0, raw({1}))}), ElementsAre(fourCc("soun")));
    EXPECT_THAT(handlersOf({avcConfig(0)}), ElementsAre(fourCc("vide")));
    EXPECT_THAT(handlersOf({onMetaDataTag(1, 1)}), IsEmpty());
}

TEST(FLVMediaSourceTest, TheSizeIsLookedForInTheFirstTenTags) {
    const FlvTag other = scriptTag(0, amfString("onCuePoint") + amfNull());
    std::vector<FlvTag> tags(9, other);
    tags.push_back(onMetaDataTag(320, 180));
    EXPECT_EQ(sizeIn(tags), std::make_pair(320.0F, 180.0F));
    tags.insert(tags.begin(), other);
    EXPECT_EQ(sizeIn(tags), kNoSize);
}

TEST(FLVMediaSourceTest, ATagLaterThanZeroEndsTheSearchForTheSize) {
    EXPECT_EQ(sizeIn({mp3Frame(1, raw({1})), onMetaDataTag(320, 180)}), kNoSize);
    FlvTag late = onMetaDataTag(320, 180);
    late.timeMs = 1;
    EXPECT_EQ(sizeIn({late}), kNoSize);
    EXPECT_EQ(sizeIn({mp3Frame(0xfffffff6, raw({1})), onMetaDataTag(320, 180)}).first, 320.0F);
}

TEST(FLVMediaSourceTest, TheFirstRecordOfThatNameIsTheOnlyOne) {
    EXPECT_EQ(
        sizeIn({scriptTag(0, amfString("onMetaDatX") + amfNull()),
                scriptTag(0, amfString("onMetaData") + amfEcmaArray({})), onMetaDataTag(320, 180)}),
        kNoSize);
}

TEST(FLVMediaSourceTest, DataInAMF3TellsNoSize) {
    FlvTag metadata = onMetaDataTag(320, 180);
    metadata.type = 15;
    EXPECT_EQ(sizeIn({metadata}), kNoSize);
}

TEST(FLVMediaSourceTest, OtherMembersOfTheRecordAreSteppedOver) {
    const Bytes members = amfEcmaArray({{"keyframes", amfObject({{"width", amfNumber(1)}})},
                                        {"Width", amfNumber(2)},
                                        {"width", amfNumber(320)},
                                        {"date", amfDate(0)},
                                        {"height", amfNumber(180)},
                                        {"widths", amfString("x")}});
    EXPECT_EQ(sizeIn({scriptTag(0, amfString("onMetaData") + members)}),
              std::make_pair(320.0F, 180.0F));
}

TEST(FLVMediaSourceTest, SidesThatAreNoneCountAsNotGiven) {
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    constexpr double kNotANumber = std::numeric_limits<double>::quiet_NaN();
    for (double side : {-1.0, 65535.5, 65536.0, 1e300, kInfinity, -kInfinity, kNotANumber}) {
        EXPECT_EQ(sizeIn({onMetaDataTag(side, side)}), kNoSize) << side;
    }
    EXPECT_EQ(sizeIn({onMetaDataTag(0, 65535)}), std::make_pair(0.0F, 65535.0F));
}

TEST(FLVMediaSourceTest, ASideThatIsNoNumberFails) {
    for (const char* name : {"width", "height"}) {
        FLVFile file(
            {scriptTag(0, amfString("onMetaData") + amfEcmaArray({{name, amfString("320")}})),
             avcConfig(0)});
        EXPECT_EQ(flvCodeOf([&] { file.open(); }), 7U);
    }
}

TEST(FLVMediaSourceTest, TheDurationIsTheTimeOfTheLastTagOfAnyType) {
    EXPECT_EQ(durationOf(flvFile({mp3Frame(500, raw({1})), mp3Frame(300, raw({1}))})), 300U);
    EXPECT_EQ(durationOf(flvFile({mp3Frame(500, raw({1})), scriptTag(900, amfString("x"))})), 900U);
    EXPECT_EQ(durationOf(flvFile({mp3Frame(500, raw({1})), mp3Frame(0, raw({1}))})), 0U);
    EXPECT_EQ(durationOf(flvFile({mp3Frame(0xfffffff6, raw({1}))})), 0xfffffff6U);
}

TEST(FLVMediaSourceTest, WithoutTheLastSizeWordTheDurationIsFoundGoingForward) {
    const Bytes content = flvFile({mp3Frame(0, raw({1})), mp3Frame(800, raw({1}))});
    FLVFile file(content.cutTo(content.size() - 4));
    const auto source = file.open();
    EXPECT_EQ(source->getProperties().duration, 800U);
    EXPECT_EQ(tracksOf(*source).size(), 1U);
}

TEST(FLVMediaSourceTest, DamageBehindTheFirstTagsIsLeftToTheIteration) {
    const Bytes content = flvFile(
        {mp3Frame(0, raw({1})), mp3Frame(26, raw({1})), mp3Frame(52, raw({1, 2, 3, 4, 5}))});
    FLVFile file(content.cutTo(content.size() - 6));
    const auto source = file.open();
    EXPECT_EQ(source->getProperties().duration, 26U);
    const auto samples = source->getSampleIterator();
    EXPECT_EQ(samples->next().time.value, 0U);
    EXPECT_EQ(samples->next().time.value, 26U);
    EXPECT_TRUE(samples->hasNext());
    EXPECT_EQ(flvCodeOf([&] { samples->next(); }), 8U);
}

TEST(FLVMediaSourceTest, DamageAmongTheFirstTagsFailsAtOnce) {
    FLVFile file({avcConfig(0).claimingBody(0xffffff)});
    EXPECT_EQ(flvCodeOf([&] { file.open(); }), 8U);
}

TEST(FLVMediaSourceTest, AFileWithoutTagsFailsWithAnotherCodeThanDamage) {
    for (const Bytes& content : {flvHeader(), flvFile({}), flvFile({flvTag(77, 0, raw({1}))})}) {
        FLVFile file(content);
        const std::uint32_t code = flvCodeOf([&] { file.open(); });
        EXPECT_NE(code, 0U);
        EXPECT_NE(code, 8U);
    }
}

TEST(FLVMediaSourceTest, EachSampleIteratorIsANewPass) {
    FLVFile file({mp3Frame(0, raw({1})), mp3Frame(26, raw({1}))});
    const auto source = file.open();
    const auto first = source->getSampleIterator();
    EXPECT_EQ(first->next().time.value, 0U);
    const auto second = source->getSampleIterator();
    EXPECT_EQ(second->next().time.value, 0U);
    EXPECT_EQ(first->next().time.value, 26U);
    EXPECT_FALSE(first->hasNext());
}

}  // namespace
}  // namespace torvo::kzspkgutil
