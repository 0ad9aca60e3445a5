#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "flv/Allocator.h"
#include "flv/Reader.h"
#include "flv/TagFilter.h"
#include "kzspkgutil/FLVStream.h"
#include "kzspkgutil/model/IMediaSource.h"

namespace torvo::kzspkgutil {

/// An FLV file as a source: at most one video and one audio track, in that order.
///
/// All operations throw flv::Exception.
class FLVMediaSource final : public IMediaSource {
public:
    /// Opens the file and finds its duration, the size of the picture and the tracks. `context`
    /// outlives the source.
    FLVMediaSource(IPackagerContext& context, const std::string& path, std::uint32_t openFlags);

    MediaProperties getProperties() const override;
    boost::shared_ptr<ITrackIterator> getTracks() const override;
    /// A new pass over the tags of the tracks' types.
    boost::shared_ptr<ISampleIterator> getSampleIterator() override;

    /// The tag types of the tracks.
    const flv::TagFilter& getFilter() const { return filter_; }

private:
    void addVideoTrack(flv::TagIterator& tags, double width, double height);
    void addAudioTrack(flv::TagIterator& tags);

    IPackagerContext& context_;
    // The stream and the allocator stand before the reader, which uses both to its last moment.
    FLVStream stream_;
    flv::Allocator allocator_;
    flv::Reader reader_;
    flv::TagFilter filter_;
    std::vector<boost::shared_ptr<KZSTrack>> tracks_;
    MediaProperties properties_;
};

}  // namespace torvo::kzspkgutil
