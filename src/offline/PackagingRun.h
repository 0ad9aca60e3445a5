#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

#include <boost/smart_ptr/shared_ptr.hpp>

#include "kzs/base/FragmenterSample.h"
#include "kzspkgutil/model/IMediaSource.h"
#include "offline/FragmentRecorder.h"
#include "offline/FragmentTiming.h"
#include "offline/KZSMediaProperties.h"
#include "offline/OptionMap.h"

namespace torvo::kzs {
class Fragmenter;
struct Rendition;
}  // namespace torvo::kzs

namespace torvo::kzspkgutil {
class IKZSMediaWriterPolicy;
}

namespace torvo::offline {

class SegmentWriter;

/// Drives all samples of one source through a fragmenter into segment files, and keeps the
/// bootstrap of the rendition and the index up to date.
class PackagingRun {
public:
    /// Context, policy, source and rendition outlive the run. Throws StdErrorException for bad
    /// timing options.
    PackagingRun(const OptionMap& options, kzspkgutil::IPackagerContext& context,
                 kzspkgutil::IKZSMediaWriterPolicy& policy, kzspkgutil::IMediaSource& source,
                 kzs::Rendition& rendition);

    /// Packages everything; to be called once. Once a sample has lain past `limitMs`, nothing is
    /// packaged behind the fragment that is written next; 0 means no limit. All segment and index
    /// files are complete when it returns.
    void run(double limitMs);

private:
    void start();
    void packageSamples(double limitMs);
    void handleSample(const kzs::FragmenterSample& sample);
    void finish();
    void tellProgress(double limitMs) const;

    kzspkgutil::IPackagerContext& context_;  // outlives the run
    SegmentWriter* segmenter_ = nullptr;     // lives until the process ends
    kzspkgutil::IMediaSource& source_;       // outlives the run
    KZSMediaProperties properties_;
    kzspkgutil::IKZSMediaWriterPolicy& policy_;  // outlives the run
    kzs::Rendition& rendition_;                  // outlives the run
    std::string inputPath_;
    std::string baseName_;
    std::string outputPath_;
    FragmentTiming timing_;
    std::uint32_t segmentDuration_;  // ms
    std::optional<FragmentRecorder> recorder_;
    boost::shared_ptr<kzs::Fragmenter> fragmenter_;
    boost::shared_ptr<kzspkgutil::ISampleIterator> sampleIterator_;
    kzs::FragmenterSample lastSample_;
    std::chrono::steady_clock::time_point startedAt_ = std::chrono::steady_clock::now();
    bool stopRequested_ = false;
    bool pastLimit_ = false;
};

}  // namespace torvo::offline
