#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "kzm/Allocator.h"
#include "kzm/KZSWriter.h"
#include "kzm/QlixIOStream.h"
#include "kzm/WriterRecords.h"
#include "kzspkgutil/IKZSMediaWriterPolicy.h"
#include "kzspkgutil/model/IMediaProperties.h"
#include "kzspkgutil/model/IMediaWriter.h"
#include "kzspkgutil/model/PackagerContext.h"

namespace torvo::kzspkgutil {

/// Writes one output file: a header with one track of each kind and a hint track, then a fragment
/// for each writeUpTo.
///
/// What a message becomes is up to the policy; this class decides the order of calls, and where
/// sequence headers are repeated. Failures of the box library pass through.
class KZSMediaWriter final : public IMediaWriter, public IMediaProperties {
public:
    /// Writes the header and opens the first fragment. The policy and the stream outlive the
    /// writer; the source is only read here. The stream isn't open yet: the writer opens it.
    KZSMediaWriter(IPackagerContext& context, IKZSMediaWriterPolicy& policy,
                   const IMediaProperties& source, qlix::kzm::QlixIOStream& stream);

    /// The position is that of the fragment which this call completes; the next one is open when
    /// it returns. When no message stands in front of `endTime`, nothing is written, the bootstrap
    /// is dropped, and the position is where the next fragment will lie.
    FragmentPosition writeUpTo(MessageList&& messages, const Timestamp& endTime,
                               const std::uint8_t* bootstrap, std::uint64_t bootstrapSize) override;
    /// Brings all that was written to the file, so that a failure shows. The writer stays usable.
    void flush();
    /// The end of the last file of a run: a flush.
    void finishWriter() override { flush(); }

    /// Those of the source.
    MediaProperties getProperties() const override { return properties_; }
    /// On purpose: always empty; a writer is no source of tracks.
    /// Pinned by KZSMediaWriterTest.TellsTheSourcesPropertiesAndNoTracks.
    boost::shared_ptr<ITrackIterator> getTracks() const override;

private:
    struct TrackSlot;

    qlix::kzm::WriterConfiguration configuration() const;
    void addMediaTracks(const IMediaProperties& source);
    void addHintTrack();
    void setBootstrap(const std::uint8_t* bootstrap, std::uint64_t size);
    void writeMessage(const TCMessage& message, Timestamp& lastHeaderTime);
    void writeAudio(const TCMessage& message, Timestamp& lastHeaderTime);
    void writeVideo(const TCMessage& message);

    IKZSMediaWriterPolicy& policy_;
    MediaProperties properties_;
    qlix::kzm::Allocator allocator_;
    Blob bootstrap_;  // the open fragment's; the box library reads it up to its own end
    qlix::kzm::KZSWriter writer_;
    qlix::kzm::TrackHandle videoTrack_;
    qlix::kzm::TrackHandle audioTrack_;
    qlix::kzm::TrackHandle dataTrack_;
    qlix::kzm::TrackHandle hintTrack_;
    std::vector<qlix::kzm::TrackHandle> mediaTracks_;  // in the order they were made
    std::string videoLanguage_;
    std::uint64_t fragmentOffset_ = 0;
};

}  // namespace torvo::kzspkgutil
