#include "kzspkgutil/FLVSampleIterator.h"

#include <algorithm>

#include "kzs/base/ByteOrder.h"
#include "kzspkgutil/FLVCodecs.h"

namespace torvo::kzspkgutil {
namespace {

/// Times at or above 2^31 ms stand in the file as negative words and stay negative in 64 bits.
Timestamp timeOf(const FLVTagInfo& info) {
    return kzs::milliseconds(static_cast<std::uint64_t>(std::int64_t{info.timestamp}));
}

std::uint32_t trackKindOf(std::uint8_t tagType) {
    if (tagType == kAudioTag) return kzs::FragmenterSample::kAudio;
    if (tagType == kVideoTag) return kzs::FragmenterSample::kVideo;
    return kzs::FragmenterSample::kOther;
}

}  // namespace

FLVSampleIterator::FLVSampleIterator(IPackagerContext& context, const flv::TagIterator& tags)
    : context_(context), tags_(tags) {}

bool FLVSampleIterator::hasNext() { return tags_.hasNext(); }

kzs::FragmenterSample FLVSampleIterator::next() {
    tag_ = tags_.next();
    info_ = tag_.getInfo();
    kzs::FragmenterSample sample;
    sample.trackKind = trackKindOf(info_.tagType);
    sample.time = timeOf(info_);
    // On purpose: a tag without a body counts for nothing but the end of the input.
    // Pinned by FLVSampleIteratorTest.ATagWithoutABodyIsSkipped.
    sample.isSkipped = info_.dataSize == 0;
    // On purpose: by the frame type alone; what kind of AVC packet it is doesn't matter.
    // Pinned by FLVSampleIteratorTest.HeadersAndEndsOfSequencesCountAsKeyFrames.
    sample.isKeyFrame = info_.tagType == kVideoTag && !sample.isSkipped &&
                        tag_.getVideoInfo().frameType == kFLVKeyFrame;
    return sample;
}

TCMessage FLVSampleIterator::currentMessage() {
    const std::uint32_t length = tag_.getLength();
    BlockPtr block = allocateTag(context_.getMemoryArena(), info_.dataSize);
    std::uint8_t* tag = block->data();
    tag_.copyHeaderAndData(tag, length);
    kzs::storeU32(tag + length, length);
    const std::uint32_t header = codecHeaderLength();
    return {timeOf(info_),
            timeOf(info_),
            length + kPreviousTagSizeSize,
            std::move(block),
            tag + kTagHeaderSize + header,
            info_.dataSize - header};
}

std::uint32_t FLVSampleIterator::codecHeaderLength() const {
    if (info_.dataSize == 0) return 0;
    std::uint32_t length = 0;
    if (info_.tagType == kAudioTag) {
        length = flvAudioHeaderLength(tag_.getAudioInfo().soundFormat);
    } else if (info_.tagType == kVideoTag) {
        length = flvVideoHeaderLength(tag_.getVideoInfo().codecId);
    }
    // A broken tag may be shorter than the header of its codec.
    return std::min(length, info_.dataSize);
}

}  // namespace torvo::kzspkgutil
