#pragma once

#include <string>

#include "hlx/HLXEncryptor.h"
#include "kzspkgutil/IKZSMediaWriterPolicy.h"
#include "kzspkgutil/MediaWriterCore.h"
#include "kzspkgutil/ProtectedDescriptor.h"

namespace torvo::kzspkgutil {

/// Writes what the clear policy writes, with every sample message as an encrypted tag, every
/// description in a protected format with a `sinf` box, and sequence headers in the clear: a player
/// has to set up its decoder before it has a key.
///
/// Failures of the encryption library pass through as hlx::HLXException.
class EncryptedKZSMediaWriterPolicy : public IKZSMediaWriterPolicy {
public:
    qlix::kzm::TrackHandle addVideoTrack(qlix::kzm::KZSWriter& writer,
                                         const KZSTrack& track) override;
    qlix::kzm::TrackHandle addAudioTrack(qlix::kzm::KZSWriter& writer,
                                         const KZSTrack& track) override;
    qlix::kzm::TrackHandle addDataTrack(qlix::kzm::KZSWriter& writer,
                                        const KZSTrack& track) override;

    void writeAudioMessage(qlix::kzm::KZSWriter& writer, const qlix::kzm::TrackHandle& hintTrack,
                           const qlix::kzm::TrackHandle& audioTrack, const TCMessage& message,
                           bool indexed) override;
    void writeVideoMessage(qlix::kzm::KZSWriter& writer, const qlix::kzm::TrackHandle& hintTrack,
                           const qlix::kzm::TrackHandle& videoTrack,
                           const TCMessage& message) override;
    void writeDataMessage(qlix::kzm::KZSWriter& writer, const qlix::kzm::TrackHandle& hintTrack,
                          const qlix::kzm::TrackHandle& dataTrack,
                          const TCMessage& message) override;

    void writeVideoHeader(qlix::kzm::KZSWriter& writer, const qlix::kzm::TrackHandle& hintTrack,
                          const qlix::kzm::TrackHandle& videoTrack, const Timestamp& sampleTime,
                          const Timestamp& messageTime) override;
    bool writeAudioHeader(qlix::kzm::KZSWriter& writer, const qlix::kzm::TrackHandle& hintTrack,
                          const qlix::kzm::TrackHandle& audioTrack, const Timestamp& sampleTime,
                          const Timestamp& messageTime, bool indexed) override;

    /// For input that is protected already: the description must hold a `sinf` box as
    /// splitProtectedDescription wants it. The descriptor carries the clear format.
    boost::shared_ptr<KZSSampleDescriptor> readVideoDescriptor(
        const qlix::kzm::SampleDescriptor& description) override;
    boost::shared_ptr<KZSSampleDescriptor> readAudioDescriptor(
        const qlix::kzm::SampleDescriptor& description) override;
    boost::shared_ptr<KZSSampleDescriptor> readDataDescriptor(
        const qlix::kzm::SampleDescriptor& description) override;

    /// The `sinf` box of a description whose samples have `clearFormat` once decrypted.
    virtual Blob makeProtectionBox(std::uint32_t clearFormat) const = 0;

    /// The protection metadata, and the same as base64 text.
    const Blob& metadata() const { return metadata_; }
    const std::string& metadataText() const { return metadataText_; }

    /// What the encryption library is told about AVC for a sample of a class.
    bool isAvc(std::uint32_t trackClass) const;

protected:
    /// `context` outlives the policy. Reads the metadata once.
    EncryptedKZSMediaWriterPolicy(IPackagerContext& context, hlx::HLXEncryptor encryptor,
                                  const hlx::DRMMetadata& metadata);
    ~EncryptedKZSMediaWriterPolicy() = default;

private:
    using AddDescription = void (MediaWriterCore::*)(qlix::kzm::KZSWriter&,
                                                     const qlix::kzm::TrackHandle&,
                                                     const KZSSampleDescriptor&, std::uint32_t,
                                                     const Blob&);

    qlix::kzm::TrackHandle addTrack(qlix::kzm::KZSWriter& writer, const KZSTrack& track,
                                    ProtectedDescriptors& list, bool isData,
                                    AddDescription addDescription);
    /// The message as it goes to the core: sequence headers as they are, others encrypted.
    TCMessage protect(const TCMessage& message) const;

    IPackagerContext& context_;
    hlx::HLXEncryptor encryptor_;
    std::string metadataText_;
    Blob metadata_;
    MediaWriterCore core_;
    ProtectedDescriptors videoDescriptors_;
    ProtectedDescriptors audioDescriptors_;
};

}  // namespace torvo::kzspkgutil
