#include "kzspkgutil/EncryptedKZSMediaWriterPolicy.h"

#include <utility>

#include "kzm/KZSWriter.h"
#include "kzs/Base64.h"
#include "kzspkgutil/DescriptorReader.h"
#include "kzspkgutil/MessageEncryptor.h"
#include "kzspkgutil/ProtectionBox.h"

namespace torvo::kzspkgutil {
namespace {

ProtectedDescriptor protectedForm(const KZSSampleDescriptor& descriptor, Blob protectionData) {
    const std::uint32_t handler = descriptor.info == nullptr ? 0 : descriptor.info->handler;
    return {protectedFormatOf(handler), descriptor.format, descriptor.extraData,
            std::move(protectionData)};
}

/// The descriptor of a protected description, which `list` (null: none) gets as well.
boost::shared_ptr<KZSSampleDescriptor> readProtected(const qlix::kzm::SampleDescriptor& description,
                                                     ProtectedDescriptors* list) {
    const SplitDescription split = splitProtectedDescription(description.data);
    boost::shared_ptr<KZSSampleDescriptor> descriptor = readDescriptor(description);
    descriptor->extraData = split.extraData;
    descriptor->protectionData = split.protectionData;
    descriptor->format = split.clearFormat;
    descriptor->info->format = split.clearFormat;
    descriptor->info->extraDataSize = static_cast<std::uint32_t>(split.extraData.size());
    if (list != nullptr) {
        list->push_back(
            {description.format, split.clearFormat, split.extraData, split.protectionData});
    }
    return descriptor;
}

}  // namespace

EncryptedKZSMediaWriterPolicy::EncryptedKZSMediaWriterPolicy(IPackagerContext& context,
                                                             hlx::HLXEncryptor encryptor,
                                                             const hlx::DRMMetadata& metadata)
    : context_(context),
      encryptor_(std::move(encryptor)),
      metadata_(metadata.bytes()),
      core_(context) {
    metadataText_ = kzs::base64Encode(metadata_);
}

qlix::kzm::TrackHandle EncryptedKZSMediaWriterPolicy::addVideoTrack(qlix::kzm::KZSWriter& writer,
                                                                    const KZSTrack& track) {
    return addTrack(writer, track, videoDescriptors_, false, &MediaWriterCore::addVideoDescription);
}

qlix::kzm::TrackHandle EncryptedKZSMediaWriterPolicy::addAudioTrack(qlix::kzm::KZSWriter& writer,
                                                                    const KZSTrack& track) {
    return addTrack(writer, track, audioDescriptors_, false, &MediaWriterCore::addAudioDescription);
}

qlix::kzm::TrackHandle EncryptedKZSMediaWriterPolicy::addDataTrack(qlix::kzm::KZSWriter& writer,
                                                                   const KZSTrack& track) {
    ProtectedDescriptors dataDescriptors;
    return addTrack(writer, track, dataDescriptors, true, &MediaWriterCore::addDataDescription);
}

qlix::kzm::TrackHandle EncryptedKZSMediaWriterPolicy::addTrack(qlix::kzm::KZSWriter& writer,
                                                               const KZSTrack& track,
                                                               ProtectedDescriptors& list,
                                                               bool isData,
                                                               AddDescription addDescription) {
    // The lists go on growing with every file of a run; this file's part begins here.
    const std::size_t first = list.size();
    std::uint64_t space = 0;
    for (const auto& descriptor : track.descriptors) {
        list.push_back(protectedForm(*descriptor, makeProtectionBox(descriptor->format)));
        space += list.back().extraData.size() + list.back().protectionData.size();
    }
    const qlix::kzm::TrackHandle handle = core_.addTrack(writer, track, kzs::low32(space), isData);
    for (std::size_t i = 0; i < track.descriptors.size(); ++i) {
        const ProtectedDescriptor& form = list[first + i];
        (core_.*addDescription)(writer, handle, *track.descriptors[i], form.protectedFormat,
                                form.protectionData);
    }
    return handle;
}

bool EncryptedKZSMediaWriterPolicy::isAvc(std::uint32_t trackClass) const {
    if (trackClass != kVideoTrackClass || videoDescriptors_.empty()) return false;
    // On purpose: the protected format is asked, which is `encv`, so this is never true. The
    // library tells AVC from the bytes.
    // Pinned by EncryptedPolicyTest.IsAvcIsFalseForEverySample.
    switch (videoDescriptors_.front().protectedFormat) {
        case kzs::fourCc("H264"):
        case kzs::fourCc("h264"):
        case kzs::fourCc("avc1"):
        case kzs::fourCc("mp4v"):
            return true;
        default:
            return false;
    }
}

TCMessage EncryptedKZSMediaWriterPolicy::protect(const TCMessage& message) const {
    if (isSequenceHeader(message)) return message;
    return encryptMessage(encryptor_, context_, message, isAvc(trackClassOf(message.getTag()[0])));
}

void EncryptedKZSMediaWriterPolicy::writeAudioMessage(qlix::kzm::KZSWriter& writer,
                                                      const qlix::kzm::TrackHandle& hintTrack,
                                                      const qlix::kzm::TrackHandle& audioTrack,
                                                      const TCMessage& message, bool indexed) {
    core_.writeAudio(writer, hintTrack, audioTrack, protect(message), indexed);
}

void EncryptedKZSMediaWriterPolicy::writeVideoMessage(qlix::kzm::KZSWriter& writer,
                                                      const qlix::kzm::TrackHandle& hintTrack,
                                                      const qlix::kzm::TrackHandle& videoTrack,
                                                      const TCMessage& message) {
    core_.writeVideo(writer, hintTrack, videoTrack, protect(message));
}

void EncryptedKZSMediaWriterPolicy::writeDataMessage(qlix::kzm::KZSWriter& writer,
                                                     const qlix::kzm::TrackHandle& hintTrack,
                                                     const qlix::kzm::TrackHandle& dataTrack,
                                                     const TCMessage& message) {
    core_.writeData(writer, hintTrack, dataTrack, protect(message));
}

void EncryptedKZSMediaWriterPolicy::writeVideoHeader(qlix::kzm::KZSWriter& writer,
                                                     const qlix::kzm::TrackHandle& hintTrack,
                                                     const qlix::kzm::TrackHandle& videoTrack,
                                                     const Timestamp& sampleTime,
                                                     const Timestamp& messageTime) {
    if (videoDescriptors_.empty()) return;
    const ProtectedDescriptor& first = videoDescriptors_.front();
    const TCMessage header =
        core_.videoHeaderMessage(first.clearFormat, sampleTime, messageTime, first.extraData);
    if (header.getTagSize() > 0) core_.writeVideo(writer, hintTrack, videoTrack, header);
}

bool EncryptedKZSMediaWriterPolicy::writeAudioHeader(qlix::kzm::KZSWriter& writer,
                                                     const qlix::kzm::TrackHandle& hintTrack,
                                                     const qlix::kzm::TrackHandle& audioTrack,
                                                     const Timestamp& sampleTime,
                                                     const Timestamp& messageTime, bool indexed) {
    if (audioDescriptors_.empty()) return false;
    const ProtectedDescriptor& first = audioDescriptors_.front();
    const TCMessage header =
        core_.audioHeaderMessage(first.clearFormat, sampleTime, messageTime, first.extraData);
    if (header.getTagSize() == 0) return false;
    core_.writeAudio(writer, hintTrack, audioTrack, header, indexed);
    return true;
}

boost::shared_ptr<KZSSampleDescriptor> EncryptedKZSMediaWriterPolicy::readVideoDescriptor(
    const qlix::kzm::SampleDescriptor& description) {
    return readProtected(description, &videoDescriptors_);
}

boost::shared_ptr<KZSSampleDescriptor> EncryptedKZSMediaWriterPolicy::readAudioDescriptor(
    const qlix::kzm::SampleDescriptor& description) {
    return readProtected(description, &audioDescriptors_);
}

boost::shared_ptr<KZSSampleDescriptor> EncryptedKZSMediaWriterPolicy::readDataDescriptor(
    const qlix::kzm::SampleDescriptor& description) {
    return readProtected(description, nullptr);
}

}  // namespace torvo::kzspkgutil
