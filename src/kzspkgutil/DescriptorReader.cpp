#include "kzspkgutil/DescriptorReader.h"

#include <boost/smart_ptr/make_shared.hpp>

#include "kzs/base/ByteOrder.h"

namespace torvo::kzspkgutil {
namespace {

boost::shared_ptr<SampleDescInfo> readInfo(const qlix::kzm::SampleDescriptor& description) {
    if (description.handler == kzs::fourCc("vide")) {
        const auto& video = dynamic_cast<const qlix::kzm::VideoSampleDescriptor&>(description);
        const auto info = boost::make_shared<VideoSampleDescInfo>();
        info->width = video.width;
        info->height = video.height;
        info->horizontalResolution = video.horizontalResolution;
        info->verticalResolution = video.verticalResolution;
        info->frameCount = static_cast<std::uint16_t>(video.frameCount);
        info->depth = static_cast<std::uint16_t>(video.depth);
        return info;
    }
    if (description.handler == kzs::fourCc("soun")) {
        const auto& audio = dynamic_cast<const qlix::kzm::AudioSampleDescriptor&>(description);
        const auto info = boost::make_shared<AudioSampleDescInfo>();
        info->sampleRate = audio.sampleRate;
        info->channelCount = audio.channelCount;
        info->sampleSize = audio.sampleSize;
        return info;
    }
    return boost::make_shared<SampleDescInfo>();
}

}  // namespace

boost::shared_ptr<KZSSampleDescriptor> readDescriptor(
    const qlix::kzm::SampleDescriptor& description) {
    auto descriptor = boost::make_shared<KZSSampleDescriptor>();
    descriptor->info = readInfo(description);
    descriptor->info->format = description.format;
    descriptor->info->handler = description.handler;
    descriptor->info->extraDataSize = static_cast<std::uint32_t>(description.data.size());
    descriptor->extraData = description.data;
    descriptor->format = description.format;
    return descriptor;
}

}  // namespace torvo::kzspkgutil
