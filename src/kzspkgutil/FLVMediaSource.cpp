#include "kzspkgutil/FLVMediaSource.h"

#include <optional>

#include <boost/smart_ptr/make_shared.hpp>

#include "kzs/base/ByteOrder.h"
#include "kzspkgutil/FLVCodecs.h"
#include "kzspkgutil/FLVSampleIterator.h"
#include "kzspkgutil/FLVSurvey.h"
#include "kzspkgutil/model/KZSTrackIterator.h"

namespace torvo::kzspkgutil {
namespace {

using kzs::fourCc;

/// Moves to the next tag of the type that has a body.
std::optional<flv::Tag> nextTag(flv::TagIterator& tags, std::uint8_t type) {
    while (tags.hasNext()) {
        flv::Tag tag = tags.next();
        const FLVTagInfo info = tag.getInfo();
        if (info.tagType == type && info.dataSize != 0) return tag;
    }
    return std::nullopt;
}

boost::shared_ptr<KZSSampleDescriptor> descriptorOf(const boost::shared_ptr<SampleDescInfo>& info) {
    auto descriptor = boost::make_shared<KZSSampleDescriptor>();
    descriptor->info = info;
    descriptor->format = info->format;
    return descriptor;
}

boost::shared_ptr<KZSSampleDescriptor> describeVideo(const flv::Tag& tag, double width,
                                                     double height) {
    auto info = boost::make_shared<VideoSampleDescInfo>();
    info->format = flvVideoFormat(tag.getVideoInfo().codecId);
    info->handler = fourCc("vide");
    info->width = static_cast<std::uint32_t>(width);
    info->height = static_cast<std::uint32_t>(height);
    // On purpose: fixed numbers, which no tag tells. Pinned by
    // FLVMediaSourceTest.DescribesTheVideoTrack.
    info->horizontalResolution = 72.0F;
    info->verticalResolution = 72.0F;
    info->frameCount = 1;
    info->depth = 24;
    return descriptorOf(info);
}

/// On purpose: nominal rates of 5500, 11000, 22000 and 44000, not those of the codecs.
/// Pinned by FLVMediaSourceTest.AudioIsDescribedByTheFieldsOfItsFirstByte.
float sampleRateOf(std::uint32_t rateIndex) {
    switch (rateIndex) {
        case 0:
            return 5500.0F;
        case 1:
            return 11000.0F;
        case 2:
            return 22000.0F;
        default:
            return 44000.0F;
    }
}

boost::shared_ptr<KZSSampleDescriptor> describeAudio(const flv::Tag& tag) {
    const FLVAudioInfo audio = tag.getAudioInfo();
    auto info = boost::make_shared<AudioSampleDescInfo>();
    info->format = flvAudioFormat(audio.soundFormat);
    info->handler = fourCc("soun");
    info->sampleRate = sampleRateOf(audio.sampleRateIndex);
    info->channelCount = audio.channelFlag != 0 ? 2 : 1;
    info->sampleSize = audio.sampleSizeFlag != 0 ? 16 : 8;
    return descriptorOf(info);
}

/// What the tracks of all FLV files have in common.
boost::shared_ptr<KZSTrack> newTrack(std::uint32_t handler, const MediaProperties& properties) {
    auto track = boost::make_shared<KZSTrack>();
    track->handler = handler;
    track->language = "eng";
    track->duration = properties.duration;
    track->timescale = 1000;
    track->trackFlags = 1;
    // On purpose: 1 also where no tag tells the codec and the track has no description.
    // Pinned by FLVMediaSourceTest.VideoWhoseTagsAreAllEmptyIsATrackWithoutDescription.
    track->descriptionCount = 1;
    return track;
}

}  // namespace

FLVMediaSource::FLVMediaSource(IPackagerContext& context, const std::string& path,
                               std::uint32_t openFlags)
    : context_(context), stream_(path, openFlags), reader_(stream_, allocator_) {
    const FLVSurvey survey = surveyFLV(reader_);
    properties_.isFragmented = true;
    properties_.duration = survey.durationMs;
    // On purpose: both kinds are looked for in one walk, so audio is described by its first tag
    // behind the first video tag; tags of one kind are taken to have the same parameters.
    // Pinned by FLVMediaSourceTest.AudioIsDescribedByTheTagBehindTheFirstVideoTag.
    flv::TagIterator tags = reader_.getTags(flv::Direction::forward);
    if (survey.hasVideo) addVideoTrack(tags, survey.width, survey.height);
    if (survey.hasAudio) addAudioTrack(tags);
}

MediaProperties FLVMediaSource::getProperties() const { return properties_; }

boost::shared_ptr<ITrackIterator> FLVMediaSource::getTracks() const {
    return boost::make_shared<KZSTrackIterator>(tracks_);
}

boost::shared_ptr<ISampleIterator> FLVMediaSource::getSampleIterator() {
    // On purpose: each iterator is a new pass over the file, and script tags take no part.
    // Pinned by FLVMediaSourceTest.EachSampleIteratorIsANewPass.
    return boost::make_shared<FLVSampleIterator>(context_, reader_.getTagsByTagTypes(filter_));
}

void FLVMediaSource::addVideoTrack(flv::TagIterator& tags, double width, double height) {
    const boost::shared_ptr<KZSTrack> track = newTrack(fourCc("vide"), properties_);
    track->width = static_cast<float>(width);
    track->height = static_cast<float>(height);
    if (const auto tag = nextTag(tags, kVideoTag)) {
        track->descriptors.push_back(describeVideo(*tag, width, height));
    }
    tracks_.push_back(track);
    filter_.add(kVideoTag);
}

void FLVMediaSource::addAudioTrack(flv::TagIterator& tags) {
    const boost::shared_ptr<KZSTrack> track = newTrack(fourCc("soun"), properties_);
    // On purpose: full volume, where video has none.
    // Pinned by FLVMediaSourceTest.DescribesTheAudioTrackOfAFileWithoutVideo and
    // .DescribesTheVideoTrack.
    track->volume = 1.0F;
    if (const auto tag = nextTag(tags, kAudioTag)) {
        track->descriptors.push_back(describeAudio(*tag));
    }
    tracks_.push_back(track);
    filter_.add(kAudioTag);
}

}  // namespace torvo::kzspkgutil
