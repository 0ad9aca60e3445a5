#include "kzspkgutil/MediaWriterCore.h"

#include <algorithm>
#include <array>

#include "kzm/KZSWriter.h"
#include "kzm/SampleDescriptor.h"
#include "kzm/WriterRecords.h"
#include "kzs/base/ByteOrder.h"
#include "kzspkgutil/CodecConfig.h"
#include "kzspkgutil/FLVCodecs.h"
#include "kzspkgutil/HeaderMessages.h"
#include "kzspkgutil/WriterFields.h"

namespace torvo::kzspkgutil {
namespace {

using kzs::fourCc;
using qlix::kzm::KZMSample;
using qlix::kzm::KZSWriter;
using qlix::kzm::TrackHandle;

constexpr std::uint32_t kTimescale = 1000;
constexpr std::uint8_t kAacCode = 0xA0;
/// The sound format whose real code is the second body byte.
constexpr std::uint8_t kExtendedCode = 0xD0;
// On purpose: PCM (0x00, 0x10, 0x30) is not among them, though FLV sources describe it as `.mp3`.
// Pinned by WriteAudioCodeTest.IsTheHighNibbleOfTheFirstByte.
constexpr std::array<std::uint8_t, 14> kWrittenAudioCodes = {
    1,    2,    3,    4, 5, 6,  // behind the extended code: AC-3, E-AC-3 and four kinds of DTS
    0x20, 0xE0,                 // MP3
    0x40, 0x50, 0x60,           // Nellymoser
    0xA0, 0xB0, 0xC0,           // AAC, Speex, Opus
};

bool isAvcFormat(std::uint32_t format) {
    return format == fourCc("H264") || format == fourCc("h264") || format == fourCc("avc1");
}

bool isAvcHeader(const TCMessage& message) {
    const std::uint8_t* const body = message.getTagBody();
    return message.getTagBodySize() >= 2 && flvCodecIdOf(body[0]) == kFLVAvc && body[1] == 0;
}

bool isAacHeader(const TCMessage& message) {
    const std::uint8_t* const body = message.getTagBody();
    return message.getTagBodySize() >= 2 && (body[0] & 0xF0) == kAacCode && body[1] == 0;
}

void releaseBlock(void* context) { static_cast<IMemoryArenaAlloc*>(context)->release(); }

/// The message's bytes with a reference to their block, which the writer gives back.
qlix::kzm::SampleData sharedData(const TCMessage& message) {
    IMemoryArenaAlloc* const block = message.getBlock().get();
    block->addRef();
    return {message.getTag(), block, releaseBlock};
}

/// The whole tag as a sample of the hint track.
KZMSample hintSampleOf(const TCMessage& message, bool isSync) {
    KZMSample sample;
    sample.size = message.getTagSize();
    // On purpose: not the time by which cuts go.
    // Pinned by WriteVideoTest.TakesTheTimeOfTheSampleAndNotOfTheMessage.
    sample.time = message.getSampleTime().value;
    sample.timescale = kTimescale;
    sample.handler = fourCc("hint");
    sample.kind = isSync ? qlix::kzm::kSyncSample : 0;
    return sample;
}

void writeHinted(KZSWriter& writer, const TrackHandle& hintTrack, const TrackHandle& mediaTrack,
                 const TCMessage& message, const KZMSample& sample, bool indexed) {
    const qlix::kzm::MediaPart part = {message.getSampleDataOffset(), message.getSampleDataSize()};
    writer.writeHintedSample(hintTrack, mediaTrack, sample, part, sharedData(message), indexed);
}

/// A sequence header is a sample of the hint track alone.
void writeHeader(KZSWriter& writer, const TrackHandle& hintTrack, const TCMessage& message,
                 bool indexed) {
    writer.writeSample(hintTrack, hintSampleOf(message, true), sharedData(message), indexed);
}

/// Body bytes 2 to 4 as a signed number, in milliseconds. On purpose 0 in a body of four bytes.
/// Pinned by WriteVideoTest.HasNoCompositionOffsetInABodyOfFourBytes.
std::uint32_t avcCompositionOffset(const TCMessage& message) {
    if (message.getTagBodySize() < 5) return 0;
    const std::uint32_t offset = kzs::loadU24(message.getTagBody() + 2);
    return (offset & 0x800000) != 0 ? offset | 0xFF000000 : offset;
}

void appendTo(Blob& data, const Blob& more) { data.insert(data.end(), more.begin(), more.end()); }

}  // namespace

bool isSequenceHeader(const TCMessage& message) {
    if (message.getTagSize() < kTagOverhead) return false;
    switch (message.getTag()[0] & kTagTypeMask) {
        case kVideoTag:
            return isAvcHeader(message);
        case kAudioTag:
            return isAacHeader(message);
        default:
            return false;
    }
}

TrackHandle MediaWriterCore::addTrack(KZSWriter& writer, const KZSTrack& track,
                                      std::uint32_t descriptionSpace, bool dataTrack) {
    constexpr char kHandlerName[] = "MainConcept";
    // On purpose: room for that many where no count is known.
    // Pinned by AddTrackTest.ReservesRoomForTenDescriptionsOfADataTrackWithoutACount.
    constexpr std::uint32_t kDataEntries = 10;

    qlix::kzm::KZMTrackInfo info;
    info.handler = track.handler;
    info.flags = track.trackFlags;
    // On purpose: always milliseconds, and the duration's number goes over as it stands, in
    // whatever timescale the track has. Players go by the hint track's times.
    // Pinned by AddTrackTest.PutsTheDurationNumberInMillisecondsAsItStands.
    info.timescale = kTimescale;
    info.duration = truncatedLow32(static_cast<double>(track.duration) / 1000 * 1000 + 0.5);
    info.creationDate = currentDate();
    info.modificationDate = info.creationDate;
    info.width = track.width;
    info.height = track.height;
    // On purpose: for video as well. Pinned by AddTrackTest.FillsTheTrackHeader.
    info.volume = 1.0F;
    setLanguage(info, track.language);
    info.handlerName = kHandlerName;
    info.handlerNameLength = sizeof kHandlerName;  // 12, with the terminating zero

    qlix::kzm::KZMTrackParams params;
    params.initialEntries =
        dataTrack && track.descriptionCount == 0 ? kDataEntries : track.descriptionCount;
    params.maxEdits = track.emptyEditCount;
    params.descriptionSpace = descriptionSpace;
    return writer.addTrack(info, params, info.handlerName, info.handlerNameLength,
                           qlix::kzm::kDefaultSampleTableCapacity);
}

void MediaWriterCore::addVideoDescription(KZSWriter& writer, const TrackHandle& track,
                                          const KZSSampleDescriptor& descriptor,
                                          std::uint32_t format, const Blob& protection) {
    const auto& info = dynamic_cast<const VideoSampleDescInfo&>(*descriptor.info);
    Blob data;
    // On purpose: `mp4v` is written without its extra data.
    // Pinned by AddVideoDescriptionTest.CarriesNoDataForOtherFormats.
    if (isAvcFormat(info.format)) {
        const ByteView box = findBox(descriptor.extraData, fourCc("avcC"));
        data.assign(box.data, box.data + box.size);
    }
    appendTo(data, protection);

    qlix::kzm::VideoSampleDescriptor description;
    description.format = format;
    description.handler = fourCc("vide");
    description.width = info.width;
    description.height = info.height;
    description.horizontalResolution = info.horizontalResolution;
    description.verticalResolution = info.verticalResolution;
    description.frameCount = info.frameCount;
    description.depth = info.depth;
    writer.addSampleDescription(track, description, data);
}

void MediaWriterCore::addAudioDescription(KZSWriter& writer, const TrackHandle& track,
                                          const KZSSampleDescriptor& descriptor,
                                          std::uint32_t format, const Blob& protection) {
    const auto& info = dynamic_cast<const AudioSampleDescInfo&>(*descriptor.info);
    Blob data;
    if (info.format == fourCc("mp4a")) data = descriptor.extraData;
    appendTo(data, protection);

    qlix::kzm::AudioSampleDescriptor description;
    description.format = format;
    description.handler = fourCc("soun");
    description.sampleRate = info.sampleRate;
    description.channelCount = static_cast<std::uint16_t>(info.channelCount);
    description.sampleSize = static_cast<std::uint16_t>(info.sampleSize);
    writer.addSampleDescription(track, description, data);
}

void MediaWriterCore::addDataDescription(KZSWriter& writer, const TrackHandle& track,
                                         const KZSSampleDescriptor&, std::uint32_t format,
                                         const Blob& protection) {
    // On purpose: the extra data of a data track isn't carried.
    // Pinned by AddDataDescriptionTest.DoesNotCarryTheExtraData.
    qlix::kzm::SampleDescriptor description;
    description.format = format;
    description.handler = fourCc("meta");
    writer.addSampleDescription(track, description, protection);
}

TCMessage MediaWriterCore::videoHeaderMessage(std::uint32_t format, const Timestamp& sampleTime,
                                              const Timestamp& messageTime, const Blob& data) {
    if (!isAvcFormat(format)) return {};
    return makeAvcHeader(context_.getMemoryArena(), findBox(data, fourCc("avcC")), sampleTime,
                         messageTime);
}

TCMessage MediaWriterCore::audioHeaderMessage(std::uint32_t format, const Timestamp& sampleTime,
                                              const Timestamp& messageTime, const Blob& data) {
    if (format != fourCc("mp4a")) return {};
    return makeAacHeader(context_.getMemoryArena(), findAudioSpecificConfig(data), sampleTime,
                         messageTime);
}

void MediaWriterCore::writeAudio(KZSWriter& writer, const TrackHandle& hintTrack,
                                 const TrackHandle& audioTrack, const TCMessage& message,
                                 bool indexed) {
    if (message.getTagSize() <= kTagOverhead) return;
    if (isAacHeader(message)) {
        // On purpose: never in the index, whatever was asked for.
        // Pinned by WriteAudioTest.PutsASequenceHeaderInTheHintTrackAndNeverInTheIndex.
        writeHeader(writer, hintTrack, message, false);
        return;
    }
    const std::uint8_t* const body = message.getTagBody();
    std::uint8_t code = body[0] & 0xF0;
    if (code == kExtendedCode && message.getTagBodySize() >= 2) code = body[1];
    const bool isWritten = std::find(kWrittenAudioCodes.begin(), kWrittenAudioCodes.end(), code) !=
                           kWrittenAudioCodes.end();
    if (!isWritten) return;
    writeHinted(writer, hintTrack, audioTrack, message, hintSampleOf(message, false), indexed);
}

void MediaWriterCore::writeVideo(KZSWriter& writer, const TrackHandle& hintTrack,
                                 const TrackHandle& videoTrack, const TCMessage& message) {
    if (message.getTagSize() <= kTagOverhead) return;
    const std::uint8_t first = message.getTagBody()[0];
    const bool isKeyFrame = flvFrameTypeOf(first) == kFLVKeyFrame;
    KZMSample sample = hintSampleOf(message, isKeyFrame);
    switch (flvCodecIdOf(first)) {
        case kFLVH263:
        case kFLVVp6:
        case kFLVVp6WithAlpha:
            writeHinted(writer, hintTrack, videoTrack, message, sample, isKeyFrame);
            break;
        case kFLVAvc:
            // On purpose: the index entry is on the sequence header in front of a key frame, so
            // that a player that starts there gets it, and never on the key frame.
            // Pinned by WriteVideoTest.PutsAnAvcSequenceHeaderInTheHintTrackAndTheIndex.
            if (isAvcHeader(message)) {
                writeHeader(writer, hintTrack, message, true);
            } else {
                sample.compositionOffset = avcCompositionOffset(message);
                writeHinted(writer, hintTrack, videoTrack, message, sample, false);
            }
            break;
        // On purpose: other codecs are dropped. Pinned by WriteVideoTest.DropsOtherCodecs.
        default:
            break;
    }
}

void MediaWriterCore::writeData(KZSWriter& writer, const TrackHandle& hintTrack,
                                const TrackHandle& dataTrack, const TCMessage& message) {
    writeHinted(writer, hintTrack, dataTrack, message, hintSampleOf(message, false), false);
}

}  // namespace torvo::kzspkgutil
