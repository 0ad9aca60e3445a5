#pragma once

#include <cstdint>

#include "kzspkgutil/model/KZSTrack.h"
#include "kzspkgutil/model/PackagerContext.h"
#include "kzspkgutil/model/TCMessage.h"

namespace qlix::kzm {
class KZSWriter;
class TrackHandle;
}  // namespace qlix::kzm

namespace torvo::kzspkgutil {

/// Whether a message is a sequence header: an AVC or AAC tag, clear or encrypted in type, whose
/// packet type byte is 0. A tag too short to have that byte is none.
bool isSequenceHeader(const TCMessage& message);

/// What all writer policies share: adding tracks and descriptions, building sequence headers,
/// and turning messages into calls on the writer.
///
/// Failures of the box library pass through.
class MediaWriterCore {
public:
    /// `context` outlives the core.
    explicit MediaWriterCore(IPackagerContext& context) : context_(context) {}

    /// `descriptionSpace` is the room in bytes for one description's codec data. `dataTrack` makes
    /// room for ten descriptions where the track has none.
    qlix::kzm::TrackHandle addTrack(qlix::kzm::KZSWriter& writer, const KZSTrack& track,
                                    std::uint32_t descriptionSpace, bool dataTrack);

    /// Adds a description stored under `format`, with `protection` behind its codec data. What
    /// codec data it carries is decided by the format of the descriptor's own facts: the `avcC`
    /// box for AVC, all extra data for `mp4a`, none otherwise.
    void addVideoDescription(qlix::kzm::KZSWriter& writer, const qlix::kzm::TrackHandle& track,
                             const KZSSampleDescriptor& descriptor, std::uint32_t format,
                             const Blob& protection);
    void addAudioDescription(qlix::kzm::KZSWriter& writer, const qlix::kzm::TrackHandle& track,
                             const KZSSampleDescriptor& descriptor, std::uint32_t format,
                             const Blob& protection);
    void addDataDescription(qlix::kzm::KZSWriter& writer, const qlix::kzm::TrackHandle& track,
                            const KZSSampleDescriptor& descriptor, std::uint32_t format,
                            const Blob& protection);

    /// The AVC sequence header made of the `avcC` box in `data`. The empty message when `format`
    /// is not of the AVC family or no whole `avcC` box is there.
    TCMessage videoHeaderMessage(std::uint32_t format, const Timestamp& sampleTime,
                                 const Timestamp& messageTime, const Blob& data);
    /// The AAC sequence header made of the decoder configuration of the `esds` box in `data`. The
    /// empty message when `format` is not `mp4a` or there is none.
    TCMessage audioHeaderMessage(std::uint32_t format, const Timestamp& sampleTime,
                                 const Timestamp& messageTime, const Blob& data);

    /// Write a message as a sample of the hint track and, sequence headers apart, of the media
    /// track. The writer keeps the message's block until its bytes are in the file. A message of a
    /// codec that isn't known is dropped.
    void writeAudio(qlix::kzm::KZSWriter& writer, const qlix::kzm::TrackHandle& hintTrack,
                    const qlix::kzm::TrackHandle& audioTrack, const TCMessage& message,
                    bool indexed);
    void writeVideo(qlix::kzm::KZSWriter& writer, const qlix::kzm::TrackHandle& hintTrack,
                    const qlix::kzm::TrackHandle& videoTrack, const TCMessage& message);
    void writeData(qlix::kzm::KZSWriter& writer, const qlix::kzm::TrackHandle& hintTrack,
                   const qlix::kzm::TrackHandle& dataTrack, const TCMessage& message);

private:
    IPackagerContext& context_;  // outlives the core
};

}  // namespace torvo::kzspkgutil
