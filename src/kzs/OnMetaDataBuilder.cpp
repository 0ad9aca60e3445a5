#include "kzs/OnMetaDataBuilder.h"

#include <sstream>

#include "kzs/OnMetaDataRecord.h"
#include "kzs/OnMetaDataWriter.h"
#include "kzs/base/ByteOrder.h"
#include "kzspkgutil/model/BoxSearch.h"
#include "kzspkgutil/model/IMediaProperties.h"

namespace torvo::kzs {

namespace {

using kzspkgutil::AudioSampleDescInfo;
using kzspkgutil::Blob;
using kzspkgutil::KZSSampleDescriptor;
using kzspkgutil::KZSTrack;
using kzspkgutil::VideoSampleDescInfo;

constexpr std::uint32_t kBoxHeaderSize = 8;
/// Version, profile, compatibility, level.
constexpr std::uint32_t kProfileOffset = 1;
constexpr std::uint32_t kLevelOffset = 3;

/// Null for a track without descriptions.
const KZSSampleDescriptor* firstDescriptor(const KZSTrack& track) {
    return track.descriptors.empty() ? nullptr : track.descriptors.front().get();
}

template <class Info>
const Info* infoOf(const KZSTrack& track) {
    const KZSSampleDescriptor* descriptor = firstDescriptor(track);
    return descriptor ? dynamic_cast<const Info*>(descriptor->info.get()) : nullptr;
}

void describe(const KZSTrack& track, MetaTrackInfo& info) {
    const KZSSampleDescriptor* descriptor = firstDescriptor(track);
    info.setCodec(descriptor ? descriptor->format : 0);
    info.setLength(static_cast<double>(track.duration));
    info.setTimescale(track.timescale);
    info.setLanguage(track.language);
}

/// The decoder configuration in the `avcC` box of a blob; null where there is none.
const std::uint8_t* findAvcConfiguration(const Blob& blob) {
    const kzspkgutil::ByteView box = kzspkgutil::findBox(blob, fourCc("avcC"));
    return box.size > kBoxHeaderSize + kLevelOffset ? box.data + kBoxHeaderSize : nullptr;
}

/// On purpose: `mp4v` counts, too, though it can't have an `avcC`.
/// Pinned by OnMetaDataBuilderTest.CountsMp4vAmongTheAvcCodecs.
bool isAvc(std::uint32_t codec) {
    return codec == fourCc("H264") || codec == fourCc("h264") || codec == fourCc("avc1") ||
           codec == fourCc("mp4v");
}

void takeAvcConfiguration(const KZSSampleDescriptor& descriptor, OnMetaDataRecord& record) {
    record.hasAvc = true;
    const std::uint8_t* configuration = findAvcConfiguration(descriptor.extraData);
    if (configuration == nullptr) return;
    record.avcProfile = configuration[kProfileOffset];
    record.avcLevel = configuration[kLevelOffset];
}

void addVideo(const KZSTrack& track, OnMetaDataRecord& record) {
    const auto info = std::make_shared<MetaVideoTrackInfo>();
    describe(track, *info);
    if (const auto* description = infoOf<VideoSampleDescInfo>(track)) {
        info->width = description->width;
        info->height = description->height;
    }
    info->sampleCount = track.sampleCount;
    record.tracks.push_back(info);
    if (isAvc(info->getCodec())) takeAvcConfiguration(*firstDescriptor(track), record);
}

void addAudio(const KZSTrack& track, OnMetaDataRecord& record) {
    const auto info = std::make_shared<MetaAudioTrackInfo>();
    describe(track, *info);
    if (const auto* description = infoOf<AudioSampleDescInfo>(track)) {
        info->sampleRate = static_cast<double>(description->sampleRate);
        info->channels = description->channelCount;
    }
    record.tracks.push_back(info);
    // On purpose: the object type stays 0 and so is never written.
    // Pinned by OnMetaDataBuilderTest.NeverWritesTheAacObjectType.
    if (info->getCodec() == fourCc("mp4a")) record.hasAac = true;
}

void addData(const KZSTrack& track, OnMetaDataRecord& record) {
    const auto info = std::make_shared<MetaDataTrackInfo>();
    describe(track, *info);
    record.tracks.push_back(info);
}

}  // namespace

std::vector<std::uint8_t> buildOnMetaData(const kzspkgutil::IMediaProperties& mediaProperties,
                                          bool hasSmpte, double smpteOffset) {
    OnMetaDataRecord record;
    record.duration = mediaProperties.getProperties().durationSeconds();
    record.hasSmpte = hasSmpte;
    record.smpteOffset = smpteOffset;
    for (const auto tracks = mediaProperties.getTracks(); tracks->hasNext();) {
        const auto track = tracks->next();
        switch (track->handler) {
            case fourCc("vide"):
                addVideo(*track, record);
                break;
            case fourCc("soun"):
                addAudio(*track, record);
                break;
            case fourCc("meta"):
                addData(*track, record);
                break;
            default:
                break;
        }
    }
    std::ostringstream stream;
    stream.exceptions(std::ios::failbit | std::ios::badbit);
    writeOnMetaData(stream, record);
    const std::string bytes = stream.str();
    return std::vector<std::uint8_t>(bytes.begin(), bytes.end());
}

}  // namespace torvo::kzs
