#pragma once

#include <cstdint>
#include <utility>
#include <vector>

#include <boost/smart_ptr/shared_ptr.hpp>

#include "kzspkgutil/model/IMediaProperties.h"
#include "kzspkgutil/model/MemoryArena.h"
#include "kzspkgutil/model/TCMessage.h"
#include "support/Bytes.h"
#include "support/FlvBuilder.h"

namespace torvo::kzspkgutil::test {

/// A tag as a message. Its sample proper begins `headerSize` bytes into the body.
TCMessage messageOf(const kz::test::FlvTag& tag, std::uint32_t headerSize);
/// The same with times that differ from that of the tag.
TCMessage messageOf(const kz::test::FlvTag& tag, std::uint32_t headerSize,
                    const Timestamp& sampleTime, const Timestamp& messageTime);

/// The references that a message's block has.
std::uint32_t ownersOf(const TCMessage& message);

/// Tracks with one description of the format and the extra data, as an MP4 source gives them: the
/// largest description size is that of the extra data.
boost::shared_ptr<KZSTrack> videoTrackOf(std::uint32_t format, const kz::test::Bytes& extraData);
boost::shared_ptr<KZSTrack> audioTrackOf(std::uint32_t format, const kz::test::Bytes& extraData);
boost::shared_ptr<KZSTrack> dataTrackOf(std::uint32_t format, const kz::test::Bytes& extraData);

/// An `avcC` box around a small record.
kz::test::Bytes avcBox();
/// An `esds` box of an AAC LC track at 44100 Hz, stereo: configuration 12 10.
kz::test::Bytes esdsBox();

/// A source that says what it is given.
class FixedSource : public IMediaProperties {
public:
    explicit FixedSource(std::vector<boost::shared_ptr<KZSTrack>> tracks)
        : tracks_(std::move(tracks)) {}

    MediaProperties getProperties() const override { return properties; }
    boost::shared_ptr<ITrackIterator> getTracks() const override;

    MediaProperties properties;

private:
    std::vector<boost::shared_ptr<KZSTrack>> tracks_;
};

}  // namespace torvo::kzspkgutil::test
