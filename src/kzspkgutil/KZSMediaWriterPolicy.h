#pragma once

#include <cstdint>
#include <vector>

#include "kzspkgutil/IKZSMediaWriterPolicy.h"
#include "kzspkgutil/MediaWriterCore.h"
#include "kzspkgutil/model/PackagerContext.h"

namespace torvo::kzspkgutil {

/// Writes tracks and messages in the clear.
///
/// On purpose: the lists of descriptions grow with every file of a run, and the first entry of
/// each stays the one that headers are made of.
/// Pinned by PolicyTest.GoesByTheFirstDescriptionItWasEverToldOf.
class KZSMediaWriterPolicy final : public IKZSMediaWriterPolicy {
public:
    /// `context` outlives the policy.
    explicit KZSMediaWriterPolicy(IPackagerContext& context) : core_(context) {}

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
    boost::shared_ptr<KZSSampleDescriptor> readVideoDescriptor(
        const qlix::kzm::SampleDescriptor& description) override;
    boost::shared_ptr<KZSSampleDescriptor> readAudioDescriptor(
        const qlix::kzm::SampleDescriptor& description) override;
    boost::shared_ptr<KZSSampleDescriptor> readDataDescriptor(
        const qlix::kzm::SampleDescriptor& description) override;

private:
    struct Description {
        std::uint32_t format = 0;
        Blob extraData;
    };

    MediaWriterCore core_;
    std::vector<Description> videoDescriptions_;
    std::vector<Description> audioDescriptions_;
};

}  // namespace torvo::kzspkgutil
