#include "kzspkgutil/KZSMediaWriterPolicy.h"

#include "kzm/KZSWriter.h"
#include "kzm/SampleDescriptor.h"
#include "kzspkgutil/DescriptorReader.h"

namespace torvo::kzspkgutil {

using qlix::kzm::KZSWriter;
using qlix::kzm::TrackHandle;

TrackHandle KZSMediaWriterPolicy::addVideoTrack(KZSWriter& writer, const KZSTrack& track) {
    const TrackHandle handle = core_.addTrack(writer, track, track.largestDescriptionSize, false);
    for (const auto& descriptor : track.descriptors) {
        core_.addVideoDescription(writer, handle, *descriptor, descriptor->format, Blob());
        videoDescriptions_.push_back({descriptor->format, descriptor->extraData});
    }
    return handle;
}

TrackHandle KZSMediaWriterPolicy::addAudioTrack(KZSWriter& writer, const KZSTrack& track) {
    const TrackHandle handle = core_.addTrack(writer, track, track.largestDescriptionSize, false);
    for (const auto& descriptor : track.descriptors) {
        core_.addAudioDescription(writer, handle, *descriptor, descriptor->format, Blob());
        audioDescriptions_.push_back({descriptor->format, descriptor->extraData});
    }
    return handle;
}

TrackHandle KZSMediaWriterPolicy::addDataTrack(KZSWriter& writer, const KZSTrack& track) {
    const TrackHandle handle = core_.addTrack(writer, track, track.largestDescriptionSize, true);
    for (const auto& descriptor : track.descriptors) {
        core_.addDataDescription(writer, handle, *descriptor, descriptor->format, Blob());
    }
    return handle;
}

void KZSMediaWriterPolicy::writeAudioMessage(KZSWriter& writer, const TrackHandle& hintTrack,
                                             const TrackHandle& audioTrack,
                                             const TCMessage& message, bool indexed) {
    core_.writeAudio(writer, hintTrack, audioTrack, message, indexed);
}

void KZSMediaWriterPolicy::writeVideoMessage(KZSWriter& writer, const TrackHandle& hintTrack,
                                             const TrackHandle& videoTrack,
                                             const TCMessage& message) {
    core_.writeVideo(writer, hintTrack, videoTrack, message);
}

void KZSMediaWriterPolicy::writeDataMessage(KZSWriter& writer, const TrackHandle& hintTrack,
                                            const TrackHandle& dataTrack,
                                            const TCMessage& message) {
    core_.writeData(writer, hintTrack, dataTrack, message);
}

void KZSMediaWriterPolicy::writeVideoHeader(KZSWriter& writer, const TrackHandle& hintTrack,
                                            const TrackHandle& videoTrack,
                                            const Timestamp& sampleTime,
                                            const Timestamp& messageTime) {
    if (videoDescriptions_.empty()) return;
    const Description& first = videoDescriptions_.front();
    const TCMessage header =
        core_.videoHeaderMessage(first.format, sampleTime, messageTime, first.extraData);
    if (header.getTagSize() > 0) core_.writeVideo(writer, hintTrack, videoTrack, header);
}

bool KZSMediaWriterPolicy::writeAudioHeader(KZSWriter& writer, const TrackHandle& hintTrack,
                                            const TrackHandle& audioTrack,
                                            const Timestamp& sampleTime,
                                            const Timestamp& messageTime, bool indexed) {
    if (audioDescriptions_.empty()) return false;
    const Description& first = audioDescriptions_.front();
    const TCMessage header =
        core_.audioHeaderMessage(first.format, sampleTime, messageTime, first.extraData);
    if (header.getTagSize() == 0) return false;
    core_.writeAudio(writer, hintTrack, audioTrack, header, indexed);
    return true;
}

boost::shared_ptr<KZSSampleDescriptor> KZSMediaWriterPolicy::readVideoDescriptor(
    const qlix::kzm::SampleDescriptor& description) {
    auto descriptor = readDescriptor(description);
    if (!descriptor->extraData.empty()) {
        videoDescriptions_.push_back({descriptor->format, descriptor->extraData});
    }
    return descriptor;
}

boost::shared_ptr<KZSSampleDescriptor> KZSMediaWriterPolicy::readAudioDescriptor(
    const qlix::kzm::SampleDescriptor& description) {
    auto descriptor = readDescriptor(description);
    if (!descriptor->extraData.empty()) {
        audioDescriptions_.push_back({descriptor->format, descriptor->extraData});
    }
    return descriptor;
}

boost::shared_ptr<KZSSampleDescriptor> KZSMediaWriterPolicy::readDataDescriptor(
    const qlix::kzm::SampleDescriptor& description) {
    return readDescriptor(description);
}

}  // namespace torvo::kzspkgutil
