#include "kzm/Writer.h"

#include "kzm/impl/FlatCall.h"
#include "kzm/impl/Writer.h"

namespace qlix::kzm {

using impl::flatCall;

Writer::Writer(QlixIOStream& stream, const WriterConfiguration& configuration, Allocator* allocator)
    : impl_(impl::makeFlat<impl::Writer>(stream, configuration, allocator)) {}

TrackHandle Writer::addTrack(const KZMTrackInfo& info, const KZMTrackParams& params,
                             const char* /*name*/, std::uint32_t /*nameLength*/,
                             std::uint32_t sampleTableCapacity) {
    return flatCall(*impl_, [&](impl::Writer& writer) {
        return TrackHandle(writer.addTrack(info, params, sampleTableCapacity));
    });
}

SampleDescriptionHandle Writer::addSampleDescription(const TrackHandle& track,
                                                     const SampleDescriptor& description,
                                                     const std::vector<std::uint8_t>& data) {
    return flatCall(*impl_, [&](impl::Writer& writer) {
        return SampleDescriptionHandle(
            writer.addSampleDescription(track.trackId(), description, data));
    });
}

void Writer::writeSample(const TrackHandle& track, const KZMSample& sample, SampleData data) {
    impl::SampleBlock block(data, sample.size);
    flatCall(*impl_, [&](impl::Writer& writer) {
        writer.writeSample(track.trackId(), sample, std::move(block));
    });
}

void Writer::flush() {
    flatCall(*impl_, [](impl::Writer& writer) { writer.flush(); });
}

void Writer::close() {
    flatCall(*impl_, [](impl::Writer& writer) { writer.close(); });
}

}  // namespace qlix::kzm
