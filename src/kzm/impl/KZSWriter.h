#pragma once

#include <cstdint>
#include <limits>
#include <vector>

#include "kzm/impl/AfraBox.h"
#include "kzm/impl/Writer.h"

namespace qlix::kzm::impl {

/// Writes a segment file. With F the position of a fragment:
///
///   position    box     content
///   F           'afra'  21 bytes and 16 for each entry
///   behind it   'abst'  only if a bootstrap was given
///   behind it   'moof'  runs of each track with samples
///   behind it   'mdat'  the samples of the hint track as they came
///
/// They are written when the fragment is closed, `afra` last. A fragment without samples leaves
/// nothing in the file.
class KZSWriter final : public Writer {
public:
    KZSWriter(QlixIOStream& stream, const WriterConfiguration& configuration, Allocator* allocator);

    std::uint32_t addHintTrack(const KZMTrackInfo& info, const KZMTrackParams& params,
                               const std::vector<std::uint32_t>& referenced);
    /// In the hint track a description of format `rtmp` settles the time origin.
    std::uint32_t addSampleDescription(std::uint32_t trackId, const SampleDescriptor& description,
                                       const std::vector<std::uint8_t>& data) override;
    std::uint64_t startFragment();
    void setBootstrap(SampleBlock bootstrap);
    void writeSample(std::uint32_t trackId, const KZMSample& sample, SampleBlock block,
                     bool afraEntry);
    void writeHintedSample(std::uint32_t hintId, std::uint32_t mediaId, const KZMSample& hintSample,
                           const MediaPart& part, SampleBlock block, bool afraEntry);
    void flush() override;

protected:
    void beginClosing(bool hasData) override;
    void endClosing(bool hasData) override;
    bool alignTracks() override;

private:
    static constexpr std::uint64_t kUnknownOrigin = std::numeric_limits<std::uint64_t>::max();

    /// Writes a sample of one track and returns its offset, counted like that of the `mdat`.
    std::uint64_t place(TrackState& track, const KZMSample& sample, SampleBlock block,
                        bool afraEntry);
    std::int64_t timeIn(const TrackState& track, const KZMSample& sample) const;

    BoxPtrOf<AfraBox> afra_;
    SampleBlock bootstrap_;          // waits for its fragment to be closed
    std::uint32_t hintTrackId_ = 0;  // 0 until there is one
    std::uint32_t hintTimescale_ = 0;
    std::uint64_t timeOrigin_ = kUnknownOrigin;
    std::uint32_t timeOriginScale_ = 1;
};

}  // namespace qlix::kzm::impl
