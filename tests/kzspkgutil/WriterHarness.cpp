#include "WriterHarness.h"

#include <stdexcept>
#include <string>

#include "kzm/SampleDescriptor.h"
#include "kzs/base/ByteOrder.h"
#include "kzspkgutil/HintDescription.h"

namespace torvo::kzspkgutil::test {

using kz::test::Bytes;
using kzs::fourCc;

WriterHarness::WriterHarness(const KZSTrack& track)
    : writer(stream, qlix::kzm::WriterConfiguration(), nullptr) {
    const bool isData = track.handler == fourCc("meta");
    media = core.addTrack(writer, track, track.largestDescriptionSize, isData);
    for (const auto& descriptor : track.descriptors) {
        if (isData) {
            core.addDataDescription(writer, media, *descriptor, descriptor->format, Blob());
        } else if (track.handler == fourCc("vide")) {
            core.addVideoDescription(writer, media, *descriptor, descriptor->format, Blob());
        } else {
            core.addAudioDescription(writer, media, *descriptor, descriptor->format, Blob());
        }
    }
    qlix::kzm::KZMTrackInfo info;
    info.handler = fourCc("hint");
    info.timescale = 1000;
    info.handlerName = "hint";
    info.handlerNameLength = 5;
    qlix::kzm::KZMTrackParams params;
    params.initialEntries = 1;
    params.maxEdits = 10;
    params.descriptionSpace = 64;
    hint = writer.addHintTrack(info, params, info.handlerName, info.handlerNameLength, &media, 1);
    qlix::kzm::RtmpSampleDescriptor description;
    description.format = fourCc("rtmp");
    description.handler = fourCc("hint");
    writer.addSampleDescription(hint, description, makeHintDescriptionData(std::nullopt));
    writer.startFragment();
}

kz::test::Segment WriterHarness::finish() {
    writer.close();
    return kz::test::readSegment(stream.content);
}

kz::test::PackedFragment WriterHarness::finishFragment() {
    const kz::test::Segment segment = finish();
    if (segment.fragments.size() != 1) throw std::runtime_error("not one fragment");
    return segment.fragments.front();
}

Bytes boxIn(const Bytes& file, std::string_view type) {
    const std::size_t start = file.find(type) - 4;
    return file.slice(start, kzs::loadU32(&file[start]));
}

Bytes bytesOf(const kz::test::Segment& segment, const kz::test::PackedSample& sample) {
    return segment.file.slice(sample.offset, sample.size);
}

}  // namespace torvo::kzspkgutil::test
