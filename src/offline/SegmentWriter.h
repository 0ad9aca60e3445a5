#pragma once

#include <cstdint>
#include <string>

#include <boost/smart_ptr/shared_ptr.hpp>

#include "kzspkgutil/model/IMediaWriter.h"
#include "offline/ISegmenter.h"

namespace torvo::kzspkgutil {
class IKZSMediaWriterPolicy;
class IMediaProperties;
class IPackagerContext;
class KZMStream;
class KZSMediaWriter;
}  // namespace torvo::kzspkgutil

namespace torvo::offline {

/// Writes fragments into "<output path>/<base name>Seg<n>.kzs" and begins the next file once more
/// than the segment duration has been written.
///
/// A fragment never spans two files. A file of that name is overwritten; one with a higher number
/// stays from an earlier run. Failures of the box library pass through.
class SegmentWriter final : public kzspkgutil::IMediaWriter, public ISegmenter {
public:
    /// Opens the first segment. `segmentDuration` is in milliseconds, 0 for a single segment.
    /// Context, policy and properties outlive the writer. `inputPath` is the file that is being
    /// packaged: a segment that would overwrite it throws CantAccessFileException.
    SegmentWriter(const std::string& baseName, const std::string& outputPath,
                  std::uint32_t segmentDuration, kzspkgutil::IPackagerContext& context,
                  kzspkgutil::IKZSMediaWriterPolicy& policy,
                  const kzspkgutil::IMediaProperties& properties, const std::string& inputPath);
    ~SegmentWriter() override;

    kzspkgutil::FragmentPosition writeUpTo(kzspkgutil::MessageList&& messages,
                                           const kzspkgutil::Timestamp& endTime,
                                           const std::uint8_t* bootstrap,
                                           std::uint64_t bootstrapSize) override;
    void finishWriter() override;

    std::uint32_t currentSegment() const override { return segmentNumber_; }
    void advance(std::uint32_t milliseconds) override;

private:
    void roll();

    std::uint32_t segmentNumber_ = 0;
    std::uint64_t elapsed_ = 0;  // ms since the current segment began
    std::uint32_t segmentDuration_;
    std::string outputPath_;
    std::string baseName_;
    kzspkgutil::IPackagerContext& context_;           // outlives the writer
    const kzspkgutil::IMediaProperties& properties_;  // outlives the writer
    kzspkgutil::IKZSMediaWriterPolicy& policy_;       // outlives the writer
    boost::shared_ptr<kzspkgutil::KZMStream> stream_;
    boost::shared_ptr<kzspkgutil::KZSMediaWriter> writer_;  // goes before the stream
    std::string inputPath_;
};

}  // namespace torvo::offline
