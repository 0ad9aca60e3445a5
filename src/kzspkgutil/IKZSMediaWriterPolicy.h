#pragma once

#include <cstdint>

#include <boost/smart_ptr/shared_ptr.hpp>

#include "kzspkgutil/model/KZSTrack.h"
#include "kzspkgutil/model/TCMessage.h"

namespace qlix::kzm {
class KZSWriter;
class SampleDescriptor;
class TrackHandle;
}  // namespace qlix::kzm

namespace torvo::kzspkgutil {

/// Decides what a track, a header and a sample become in the file.
///
/// One policy serves all files of a run. Failures of the box library pass through. A null track
/// handle is handed on, and the box library refuses it with 20.
///
/// The order of the operations is fixed. On purpose there is no virtual destructor: a policy isn't
/// deleted through this interface. Pinned by
/// IKZSMediaWriterPolicyTest.IsNotDeletedThroughItsInterface.
class IKZSMediaWriterPolicy {
public:
    /// Each makes a track and its descriptions in `writer`.
    virtual qlix::kzm::TrackHandle addVideoTrack(qlix::kzm::KZSWriter& writer,
                                                 const KZSTrack& track) = 0;
    virtual qlix::kzm::TrackHandle addAudioTrack(qlix::kzm::KZSWriter& writer,
                                                 const KZSTrack& track) = 0;
    virtual qlix::kzm::TrackHandle addDataTrack(qlix::kzm::KZSWriter& writer,
                                                const KZSTrack& track) = 0;

    /// `indexed` asks for an index entry at this message.
    virtual void writeAudioMessage(qlix::kzm::KZSWriter& writer,
                                   const qlix::kzm::TrackHandle& hintTrack,
                                   const qlix::kzm::TrackHandle& audioTrack,
                                   const TCMessage& message, bool indexed) = 0;
    virtual void writeVideoMessage(qlix::kzm::KZSWriter& writer,
                                   const qlix::kzm::TrackHandle& hintTrack,
                                   const qlix::kzm::TrackHandle& videoTrack,
                                   const TCMessage& message) = 0;
    virtual void writeDataMessage(qlix::kzm::KZSWriter& writer,
                                  const qlix::kzm::TrackHandle& hintTrack,
                                  const qlix::kzm::TrackHandle& dataTrack,
                                  const TCMessage& message) = 0;

    /// Writes the sequence header of the first description, if its codec has one.
    virtual void writeVideoHeader(qlix::kzm::KZSWriter& writer,
                                  const qlix::kzm::TrackHandle& hintTrack,
                                  const qlix::kzm::TrackHandle& videoTrack,
                                  const Timestamp& sampleTime, const Timestamp& messageTime) = 0;
    /// The same for audio; answers whether a header was written.
    virtual bool writeAudioHeader(qlix::kzm::KZSWriter& writer,
                                  const qlix::kzm::TrackHandle& hintTrack,
                                  const qlix::kzm::TrackHandle& audioTrack,
                                  const Timestamp& sampleTime, const Timestamp& messageTime,
                                  bool indexed) = 0;

    /// Bring a stored description into the form that sources hand out.
    virtual boost::shared_ptr<KZSSampleDescriptor> readVideoDescriptor(
        const qlix::kzm::SampleDescriptor& description) = 0;
    virtual boost::shared_ptr<KZSSampleDescriptor> readAudioDescriptor(
        const qlix::kzm::SampleDescriptor& description) = 0;
    virtual boost::shared_ptr<KZSSampleDescriptor> readDataDescriptor(
        const qlix::kzm::SampleDescriptor& description) = 0;

protected:
    ~IKZSMediaWriterPolicy() = default;
};

}  // namespace torvo::kzspkgutil
