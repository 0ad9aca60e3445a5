#include "kzm/KZSWriter.h"

#include "kzm/impl/FlatCall.h"
#include "kzm/impl/KZSWriter.h"

namespace qlix::kzm {
namespace {

std::vector<std::uint32_t> idsOf(const TrackHandle* tracks, std::uint32_t count) {
    if (tracks == nullptr && count > 0) raise(ErrorCode::badArgument);
    std::vector<std::uint32_t> ids;
    for (std::uint32_t i = 0; i < count; ++i) ids.push_back(tracks[i].trackId());
    return ids;
}

}  // namespace

using impl::flatCall;

KZSWriter::KZSWriter(QlixIOStream& stream, const WriterConfiguration& configuration,
                     Allocator* allocator)
    : impl_(impl::makeFlat<impl::KZSWriter>(stream, configuration, allocator)) {}

TrackHandle KZSWriter::addTrack(const KZMTrackInfo& info, const KZMTrackParams& params,
                                const char* /*name*/, std::uint32_t /*nameLength*/,
                                std::uint32_t sampleTableCapacity) {
    return flatCall(*impl_, [&](impl::KZSWriter& writer) {
        return TrackHandle(writer.addTrack(info, params, sampleTableCapacity));
    });
}

TrackHandle KZSWriter::addHintTrack(const KZMTrackInfo& info, const KZMTrackParams& params,
                                    const char* /*name*/, std::uint32_t /*nameLength*/,
                                    const TrackHandle* referenced, std::uint32_t count) {
    return flatCall(*impl_, [&](impl::KZSWriter& writer) {
        return TrackHandle(writer.addHintTrack(info, params, idsOf(referenced, count)));
    });
}

SampleDescriptionHandle KZSWriter::addSampleDescription(const TrackHandle& track,
                                                        const SampleDescriptor& description,
                                                        const std::vector<std::uint8_t>& data) {
    return flatCall(*impl_, [&](impl::KZSWriter& writer) {
        return SampleDescriptionHandle(
            writer.addSampleDescription(track.trackId(), description, data));
    });
}

std::uint64_t KZSWriter::startFragment() {
    return flatCall(*impl_, [](impl::KZSWriter& writer) { return writer.startFragment(); });
}

void KZSWriter::setBootstrap(const std::uint8_t* buffer, std::uint64_t size, void* context,
                             void (*release)(void* context)) {
    impl::SampleBlock block({buffer, context, release}, size);
    flatCall(*impl_, [&](impl::KZSWriter& writer) { writer.setBootstrap(std::move(block)); });
}

void KZSWriter::writeSample(const TrackHandle& track, const KZMSample& sample, SampleData data,
                            bool afraEntry) {
    impl::SampleBlock block(data, sample.size);
    flatCall(*impl_, [&](impl::KZSWriter& writer) {
        writer.writeSample(track.trackId(), sample, std::move(block), afraEntry);
    });
}

void KZSWriter::writeHintedSample(const TrackHandle& hint, const TrackHandle& media,
                                  const KZMSample& hintSample, const MediaPart& part,
                                  SampleData data, bool afraEntry) {
    impl::SampleBlock block(data, hintSample.size);
    flatCall(*impl_, [&](impl::KZSWriter& writer) {
        writer.writeHintedSample(hint.trackId(), media.trackId(), hintSample, part,
                                 std::move(block), afraEntry);
    });
}

void KZSWriter::flush() {
    flatCall(*impl_, [](impl::KZSWriter& writer) { writer.flush(); });
}

void KZSWriter::close() {
    flatCall(*impl_, [](impl::KZSWriter& writer) { writer.close(); });
}

}  // namespace qlix::kzm
