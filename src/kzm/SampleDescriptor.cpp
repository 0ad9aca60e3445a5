#include "kzm/SampleDescriptor.h"

#include "kzs/base/ByteOrder.h"

namespace qlix::kzm {

using torvo::kzs::fourCc;

std::unique_ptr<SampleDescriptor> SampleDescriptor::copyOut() const {
    const bool isSpecial = handler == fourCc("vide") || handler == fourCc("soun") ||
                           (handler == fourCc("hint") && format == fourCc("rtmp"));
    if (isSpecial) return clone();
    auto out = SampleDescriptor::clone();
    out->recordSize = SampleDescriptor().recordSize;
    return out;
}

std::unique_ptr<SampleDescriptor> SampleDescriptor::clone() const {
    return std::unique_ptr<SampleDescriptor>(new SampleDescriptor(*this));
}

std::unique_ptr<SampleDescriptor> VideoSampleDescriptor::clone() const {
    return std::make_unique<VideoSampleDescriptor>(*this);
}

std::unique_ptr<SampleDescriptor> AudioSampleDescriptor::clone() const {
    return std::make_unique<AudioSampleDescriptor>(*this);
}

std::unique_ptr<SampleDescriptor> RtmpSampleDescriptor::clone() const {
    return std::make_unique<RtmpSampleDescriptor>(*this);
}

}  // namespace qlix::kzm
