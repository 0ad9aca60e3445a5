#include "kzspkgutil/KZMSampleIterator.h"

#include <utility>

#include "kzm/SampleDescriptor.h"
#include "kzs/base/ByteOrder.h"
#include "kzspkgutil/KZMTagBuilder.h"

namespace torvo::kzspkgutil {
namespace {

using kzs::fourCc;
using kzs::FragmenterSample;

std::uint32_t kindOf(std::uint32_t handler) {
    if (handler == fourCc("vide")) return FragmenterSample::kVideo;
    if (handler == fourCc("soun")) return FragmenterSample::kAudio;
    return FragmenterSample::kOther;
}

KZMDescriptionFacts factsOf(const qlix::kzm::SampleDescriptor& description) {
    KZMDescriptionFacts facts;
    facts.format = description.format;
    if (const auto* video = dynamic_cast<const qlix::kzm::VideoSampleDescriptor*>(&description)) {
        facts.width = video->width;
        facts.height = video->height;
    } else if (const auto* audio =
                   dynamic_cast<const qlix::kzm::AudioSampleDescriptor*>(&description)) {
        facts.sampleRate = audio->sampleRate;
        facts.sampleSize = audio->sampleSize;
        facts.channelCount = audio->channelCount;
    }
    return facts;
}

}  // namespace

FragmenterSample fragmenterSampleOf(const qlix::kzm::Sample& sample) {
    FragmenterSample made;
    made.trackKind = kindOf(sample.handler);
    made.time = sampleTimeOf(sample.time, sample.timescale);
    made.isKeyFrame = sample.frameType() == qlix::kzm::kSampleIsSync;
    made.isSkipped = sample.frameType() == qlix::kzm::kSampleIsEmptyEdit;
    return made;
}

KZMSampleIterator::KZMSampleIterator(IPackagerContext& context, qlix::kzm::Reader& reader,
                                     std::shared_ptr<qlix::kzm::SampleIterator> samples)
    : context_(context), reader_(reader), samples_(std::move(samples)) {}

bool KZMSampleIterator::hasNext() { return samples_->hasSample(); }

FragmenterSample KZMSampleIterator::next() {
    current_ = samples_->next();
    return fragmenterSampleOf(current_);
}

TCMessage KZMSampleIterator::currentMessage() {
    const std::uint32_t handler = current_.handler;
    if (handler != fourCc("vide") && handler != fourCc("soun") && handler != fourCc("meta")) {
        return {};
    }
    KZMSampleFacts facts;
    facts.handler = handler;
    if (current_.description != nullptr) facts.description = factsOf(*current_.description);
    facts.isKeyFrame = current_.frameType() == qlix::kzm::kSampleIsSync;
    facts.decodeTicks = current_.time;
    facts.timescale = current_.timescale;
    facts.compositionTicks = current_.compositionOffset;
    facts.sizeBytes = current_.size;

    TCMessage message = makeTagFrame(context_.getMemoryArena(), facts);
    if (message.getSampleDataSize() > 0) {
        reader_.sampleData(current_, message.getBlock()->data() + message.getSampleDataOffset());
    }
    return message;
}

}  // namespace torvo::kzspkgutil
