#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "kzm/Allocator.h"
#include "kzm/Reader.h"
#include "kzspkgutil/KZMStream.h"
#include "kzspkgutil/KZMWarningHandler.h"
#include "kzspkgutil/model/IMediaSource.h"

namespace torvo::kzspkgutil {

/// A KZM file: its first video, audio and data track whose first description is of a supported
/// format.
///
/// Failures of the box library pass through.
class KZMMediaSource final : public IMediaSource {
public:
    /// Opens the file and reads its structure, no sample data. `context` outlives the source.
    /// Throws NoSupportedTracksException when no track is left.
    KZMMediaSource(IPackagerContext& context, const std::string& path, std::uint32_t openFlags,
                   bool ignoreEdits);

    MediaProperties getProperties() const override { return properties_; }
    boost::shared_ptr<ITrackIterator> getTracks() const override;
    /// The samples of all tracks by time; of two at the same time, that of the track which comes
    /// first in the file.
    boost::shared_ptr<ISampleIterator> getSampleIterator() override;

private:
    void readProperties();
    void selectTracks();

    IPackagerContext& context_;
    KZMStream stream_;
    KZMWarningHandler warnings_;
    qlix::kzm::Allocator allocator_;
    qlix::kzm::Reader reader_;
    std::vector<qlix::kzm::Track> selected_;
    MediaProperties properties_;
    std::vector<boost::shared_ptr<KZSTrack>> tracks_;
};

}  // namespace torvo::kzspkgutil
