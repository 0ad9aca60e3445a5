#pragma once

#include "flv/TagIterator.h"
#include "kzspkgutil/model/IMediaSource.h"

namespace torvo::kzspkgutil {

/// The audio and video tags of an FLV file as samples.
///
/// Throws flv::Exception: kCorruptData where the file is damaged, kStreamFailed where it can't be
/// read.
class FLVSampleIterator final : public ISampleIterator {
public:
    /// `context` outlives this.
    FLVSampleIterator(IPackagerContext& context, const flv::TagIterator& tags);

    bool hasNext() override;
    /// Key frames are told by the frame type alone, so AVC sequence headers and end-of-sequence
    /// tags count as key frames. A tag without a body is skipped.
    kzs::FragmenterSample next() override;
    /// One block of exactly the image's size; the tag's bytes are copied into it once.
    TCMessage currentMessage() override;

private:
    std::uint32_t codecHeaderLength() const;

    IPackagerContext& context_;
    flv::TagIterator tags_;
    flv::Tag tag_;
    FLVTagInfo info_{};  ///< of `tag_`
};

}  // namespace torvo::kzspkgutil
