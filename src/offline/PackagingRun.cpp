#include "offline/PackagingRun.h"

#include <memory>
#include <utility>
#include <vector>

#include <boost/smart_ptr/make_shared.hpp>

#include "kzs/AVFragmenter.h"
#include "kzs/AudioFragmenter.h"
#include "kzs/Rendition.h"
#include "kzs/base/ByteOrder.h"
#include "offline/OutputNames.h"
#include "offline/Progress.h"
#include "offline/SegmentWriter.h"

namespace torvo::offline {
namespace {

/// On purpose: a segment writer is never destroyed, only finished. The owner isn't either, so
/// that the writers can always be reached.
/// Pinned by PackagingRunTest.TheLastSegmentStaysOpenUntilTheProcessEnds.
SegmentWriter& keepUntilTheProcessEnds(std::unique_ptr<SegmentWriter> writer) {
    static auto* const kept = new std::vector<std::unique_ptr<SegmentWriter>>;
    kept->push_back(std::move(writer));
    return *kept->back();
}

bool hasVideo(const kzspkgutil::IMediaProperties& source) {
    for (const auto tracks = source.getTracks(); tracks->hasNext();) {
        if (tracks->next()->handler == kzs::fourCc("vide")) return true;
    }
    return false;
}

}  // namespace

PackagingRun::PackagingRun(const OptionMap& options, kzspkgutil::IPackagerContext& context,
                           kzspkgutil::IKZSMediaWriterPolicy& policy,
                           kzspkgutil::IMediaSource& source, kzs::Rendition& rendition)
    : context_(context),
      source_(source),
      policy_(policy),
      rendition_(rendition),
      inputPath_(textOf(options, "input-file")),
      baseName_(baseNameOf(options)),
      outputPath_(textOf(options, "output-path")),
      timing_(fragmentTimingOf(options)),
      segmentDuration_(toMilliseconds(numberOf(options, "segment-duration"))) {}

void PackagingRun::run(double limitMs) {
    start();
    packageSamples(limitMs);
    finish();
}

void PackagingRun::start() {
    sampleIterator_ = source_.getSampleIterator();
    properties_.fillFrom(source_);
    segmenter_ = &keepUntilTheProcessEnds(std::make_unique<SegmentWriter>(
        baseName_, outputPath_, segmentDuration_, context_, policy_, properties_, inputPath_));
    recorder_.emplace(*segmenter_, *segmenter_, rendition_, timing_.fragmentDuration, outputPath_,
                      baseName_);
    constexpr bool kCheckFirstCut = false;
    if (hasVideo(source_)) {
        fragmenter_ =
            boost::make_shared<kzs::AVFragmenter>(timing_.fragmentDuration, kCheckFirstCut);
    } else {
        fragmenter_ =
            boost::make_shared<kzs::AudioFragmenter>(timing_.fragmentDuration, kCheckFirstCut);
    }
}

void PackagingRun::packageSamples(double limitMs) {
    while (sampleIterator_->hasNext()) {
        // On purpose: the sample that ends the loop, and every skipped one, is still the last
        // sample that the fragmenter is told of at the end.
        // Pinned by PackagingRunTest.SkippedSamplesAreNotReadButCanBeTheLast.
        lastSample_ = sampleIterator_->next();
        if (pastLimit_ && stopRequested_) break;
        // On purpose: past the limit, not at it, compared as floating numbers.
        // Pinned by PackagingRunTest.ASampleAtTheLimitIsNotPastIt.
        if (limitMs > 0.0 && static_cast<double>(lastSample_.time.value) > limitMs) {
            pastLimit_ = true;
        }
        if (!lastSample_.isSkipped) handleSample(lastSample_);
        if (takeProgressRequest()) tellProgress(limitMs);
    }
}

void PackagingRun::tellProgress(double limitMs) const {
    Progress progress;
    progress.bytesRead = recorder_->bytesKept();
    progress.mediaSeconds = static_cast<double>(lastSample_.time.value) / 1000.0;
    progress.wholeSeconds = limitMs / 1000.0;
    progress.fragments = recorder_->fragmentsWritten();
    progress.segments = segmenter_->currentSegment();
    progress.elapsedSeconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - startedAt_).count();
    printProgress(progress);
}

void PackagingRun::handleSample(const kzs::FragmenterSample& sample) {
    const kzs::FragmentEvent event = fragmenter_->addSample(sample);
    if (recorder_->handleEvent(event, sample.time) && pastLimit_) stopRequested_ = true;
    // On purpose only now: the sample which brought the cut starts the next fragment, and what ends
    // at the cut is packaged even if that sample can't be read.
    // Pinned by PackagingRunTest.WhatIsCutIsPackagedBeforeTheSampleThatBringsTheCutIsRead.
    recorder_->keep(sampleIterator_->currentMessage());
}

void PackagingRun::finish() {
    recorder_->handleEnd(fragmenter_->finish(lastSample_), lastSample_.time);
    recorder_->dropPending();
    context_.getMemoryArena().reset();
    segmenter_->finishWriter();
    // On purpose once more: the last fragment may have led on to a segment that has no index file.
    // Pinned by PackagingRunTest.TheIndexOfTheLastSegmentIsWrittenEvenIfThatHasNoFragment.
    recorder_->finishIndexFile();
}

}  // namespace torvo::offline
