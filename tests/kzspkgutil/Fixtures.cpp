#include "Fixtures.h"

#include <algorithm>

#include <boost/smart_ptr/make_shared.hpp>

#include "kzs/base/ByteOrder.h"
#include "kzspkgutil/model/KZSTrackIterator.h"

namespace torvo::kzspkgutil::test {

using kz::test::Bytes;

TCMessage messageOf(const kz::test::FlvTag& tag, std::uint32_t headerSize) {
    const Timestamp time = kzs::milliseconds(tag.timeMs);
    return messageOf(tag, headerSize, time, time);
}

TCMessage messageOf(const kz::test::FlvTag& tag, std::uint32_t headerSize,
                    const Timestamp& sampleTime, const Timestamp& messageTime) {
    RefCountedMemoryArena arena;
    const Bytes image = tag.image();
    const BlockPtr block = arena.allocate(image.size());
    std::copy(image.begin(), image.end(), block->data());
    const std::uint32_t offset = kTagHeaderSize + headerSize;
    return TCMessage(sampleTime, messageTime, static_cast<std::uint32_t>(image.size()), block,
                     block->data() + offset,
                     static_cast<std::uint32_t>(image.size()) - kPreviousTagSizeSize - offset);
}

std::uint32_t ownersOf(const TCMessage& message) {
    message.getBlock()->addRef();
    return message.getBlock()->release();
}

namespace {

boost::shared_ptr<KZSTrack> trackOf(std::uint32_t handler, boost::shared_ptr<SampleDescInfo> info,
                                    std::uint32_t format, const Bytes& extraData) {
    info->format = format;
    info->handler = handler;
    info->extraDataSize = static_cast<std::uint32_t>(extraData.size());
    const auto descriptor = boost::make_shared<KZSSampleDescriptor>();
    descriptor->info = info;
    descriptor->extraData = extraData;
    descriptor->format = format;
    const auto track = boost::make_shared<KZSTrack>();
    track->handler = handler;
    track->language = "eng";
    track->timescale = 1000;
    track->trackFlags = 1;
    track->descriptionCount = 1;
    track->largestDescriptionSize = info->extraDataSize;
    track->emptyEditCount = 1;
    track->descriptors.push_back(descriptor);
    return track;
}

}  // namespace

boost::shared_ptr<KZSTrack> videoTrackOf(std::uint32_t format, const Bytes& extraData) {
    const auto info = boost::make_shared<VideoSampleDescInfo>();
    info->width = 320;
    info->height = 240;
    info->horizontalResolution = 72.0F;
    info->verticalResolution = 72.0F;
    info->frameCount = 1;
    info->depth = 24;
    const auto track = trackOf(kzs::fourCc("vide"), info, format, extraData);
    track->width = 320;
    track->height = 240;
    return track;
}

boost::shared_ptr<KZSTrack> audioTrackOf(std::uint32_t format, const Bytes& extraData) {
    const auto info = boost::make_shared<AudioSampleDescInfo>();
    info->sampleRate = 44100.0F;
    info->channelCount = 2;
    info->sampleSize = 16;
    return trackOf(kzs::fourCc("soun"), info, format, extraData);
}

boost::shared_ptr<KZSTrack> dataTrackOf(std::uint32_t format, const Bytes& extraData) {
    return trackOf(kzs::fourCc("meta"), boost::make_shared<SampleDescInfo>(), format, extraData);
}

Bytes avcBox() { return kz::test::hex("0000000f 61766343 01 42 00 1e ff e1 00"); }

Bytes esdsBox() {
    return kz::test::hex(
        "00000027 65736473 00000000"
        "03 19 0001 00"
        "04 11 40 15 000000 00000000 00000000"
        "05 02 1210"
        "06 01 02");
}

boost::shared_ptr<ITrackIterator> FixedSource::getTracks() const {
    return boost::make_shared<KZSTrackIterator>(tracks_);
}

}  // namespace torvo::kzspkgutil::test
