#include "offline/FragmentRecorder.h"

#include <algorithm>
#include <numeric>
#include <sstream>
#include <utility>

#include "kzs/BootstrapWriter.h"
#include "kzs/Rendition.h"
#include "kzs/base/ByteOrder.h"
#include "offline/ISegmenter.h"

namespace torvo::offline {

using kzs::FragmentEvent;
using kzs::FragmentEventKind;
using kzs::Timestamp;

namespace {

constexpr std::uint32_t kMillisecondScale = 1000;

std::uint32_t millisecondsBetween(const Timestamp& start, const Timestamp& end) {
    const Timestamp length = end - start;
    return kzs::low32(kzs::rescaleTruncating(length.value, length.timescale, kMillisecondScale));
}

using Messages = kzspkgutil::MessageList::const_iterator;

std::uint64_t bytesOf(Messages first, Messages last) {
    return std::accumulate(first, last, std::uint64_t{0},
                           [](std::uint64_t sum, const kzspkgutil::TCMessage& message) {
                               return sum + message.getTagSize();
                           });
}

}  // namespace

std::string primedBootstrap(const kzs::Rendition& rendition) {
    std::ostringstream stream;
    stream.exceptions(std::ios::failbit | std::ios::badbit);
    // On purpose: the stream is primed with a byte that whoever takes the bytes skips, so that
    // there is a buffer whatever the bootstrap holds.
    // Pinned by FragmentRecorderTest.TheBootstrapIsPrimedWithAZeroByte.
    stream.put('\0');
    kzs::writeBootstrap(stream, rendition.bootstrap(), /*bodyOnly=*/true);
    return stream.str();
}

FragmentRecorder::FragmentRecorder(kzspkgutil::IMediaWriter& writer, ISegmenter& segmenter,
                                   kzs::Rendition& rendition, std::uint32_t fragmentDuration,
                                   const std::string& outputPath, const std::string& baseName)
    : writer_(writer),
      segmenter_(segmenter),
      rendition_(rendition),
      fragmentDuration_(fragmentDuration),
      indexFile_(outputPath, baseName) {}

bool FragmentRecorder::handleEvent(const FragmentEvent& event, const Timestamp& sampleTime) {
    switch (event.kind) {
        case FragmentEventKind::Complete:
            writeFragment(event, sampleTime, /*isLast=*/false);
            prunePending(event.end);
            return true;
        case FragmentEventKind::SpanStart:
            startSpan(event, sampleTime);
            return false;
        case FragmentEventKind::SpanCell:
            recordGap(event);
            return false;
        case FragmentEventKind::SpanEnd:
            endSpan(event);
            return true;
        case FragmentEventKind::None:
        case FragmentEventKind::FirstCutMoved:
        case FragmentEventKind::WrongTrack:
            return false;
    }
    return false;
}

void FragmentRecorder::startSpan(const FragmentEvent& event, const Timestamp& currentTime) {
    keptEvent_ = event;
    registerFragment(event, currentTime, /*isLast=*/false);
    // On purpose: the entry has an offset of 0, and no index file is written until the span ends
    // and the data is there.
    // Pinned by FragmentRecorderTest.TheStartOfASpanIsRegisteredAndNothingIsWritten.
    appendEntry(event, 0);
}

void FragmentRecorder::endSpan(const FragmentEvent& event) {
    recordGap(event);
    writeKeptFragment(event.end);
    segmenter_.advance(millisecondsBetween(keptEvent_.start, event.end));
    prunePending(event.end);
}

void FragmentRecorder::handleEnd(const FragmentEvent& event, const Timestamp& lastTime) {
    if (event.kind == FragmentEventKind::SpanEnd) {
        // On purpose: no end mark, no step to the next segment, and nothing is dropped.
        // Pinned by FragmentRecorderTest.ASpanThatEndsTheInputHasNoEndMarkAndCountsNothing.
        recordGap(event);
        writeKeptFragment(event.end);
    } else if (event.kind == FragmentEventKind::None && lastCut_) {
        // Behind the second key frame of a span the fragmenter has nothing to tell of the samples
        // that are left; they are a fragment all the same.
        writeFragment(tailBehindLastCut(lastTime), lastTime, /*isLast=*/true);
    } else {
        // On purpose: whatever the kind, so that even an input without samples has a fragment.
        // Pinned by FragmentRecorderTest.AnInputWithoutSamplesHasAFragmentNumberedZero.
        writeFragment(event, lastTime, /*isLast=*/true);
    }
}

FragmentEvent FragmentRecorder::tailBehindLastCut(const Timestamp& lastTime) const {
    FragmentEvent event;
    event.kind = FragmentEventKind::Complete;
    event.start = *lastCut_;
    event.fragmentNumber = kzs::low32(event.start.value / fragmentDuration_ + 1);
    event.end = lastTime;
    event.end.value += event.end.timescale / kMillisecondScale;  // one millisecond
    return event;
}

void FragmentRecorder::registerFragment(const FragmentEvent& event, const Timestamp& currentTime,
                                        bool isLast) {
    kzs::BootstrapBuilder& builder = rendition_.bootstrapBuilder;
    const std::uint32_t segment = segmenter_.currentSegment();
    if (event.kind == FragmentEventKind::Complete || event.kind == FragmentEventKind::SpanStart) {
        builder.addFragment(segment, event.fragmentNumber, event.start,
                            millisecondsBetween(event.start, event.end));
    } else {
        builder.addDiscontinuity(segment, event.fragmentNumber, event.start);
    }
    if (isLast) builder.markEnd();
    lastCut_ = event.end;

    kzs::BootstrapInfo& bootstrap = builder.bootstrap();
    // On purpose: the time of the sample that brought the cut, not the end of the fragment.
    // Pinned by FragmentRecorderTest.TheCurrentMediaTimeIsThatOfTheSampleAndNotOfTheCut.
    bootstrap.currentMediaTime = currentTime;
    bootstrap.profile = 0;
    bootstrap.live = false;
    bootstrap.update = false;
}

void FragmentRecorder::writeFragment(const FragmentEvent& event, const Timestamp& currentTime,
                                     bool isLast) {
    registerFragment(event, currentTime, isLast);
    appendEntry(event, writePending(event.end));
    writeIndexFile();
    // On purpose last: the index file just written and the entry name the segment that has the
    // fragment.
    // Pinned by FragmentRecorderTest.EntriesAndFilesNameTheSegmentOfTheFragment.
    segmenter_.advance(millisecondsBetween(event.start, event.end));
}

void FragmentRecorder::writeKeptFragment(const Timestamp& cutTime) {
    const std::uint64_t offset = writePending(cutTime);
    // On purpose: the first entry of that number, should there be two.
    // Pinned by FragmentRecorderTest.OfTwoEntriesOfTheKeptNumberTheFirstGetsTheOffset.
    auto& entries = index_.globalEntries;
    const auto entry = std::find_if(entries.begin(), entries.end(), [&](const auto& candidate) {
        return candidate.fragment == keptEvent_.fragmentNumber;
    });
    if (entry != entries.end()) entry->afraOffset = offset;
    writeIndexFile();
}

void FragmentRecorder::recordGap(const FragmentEvent& event) {
    // On purpose: the current media time stays what it was.
    // Pinned by FragmentRecorderTest.AGapLeavesTheCurrentMediaTimeAlone.
    rendition_.bootstrapBuilder.addDiscontinuity(segmenter_.currentSegment(), event.fragmentNumber,
                                                 event.start);
    appendEntry(event, kzs::kNoFragmentData);
    lastCut_ = event.end;
}

std::uint64_t FragmentRecorder::writePending(const Timestamp& cutTime) {
    const std::string primed = primedBootstrap(rendition_);
    const auto* bootstrap = reinterpret_cast<const std::uint8_t*>(primed.data()) + 1;
    gatherOutgoing(cutTime);
    const auto position =
        writer_.writeUpTo(std::move(outgoing_), cutTime, bootstrap, primed.size() - 1);
    outgoing_.clear();
    ++fragmentsWritten_;
    return position.offset;
}

void FragmentRecorder::gatherOutgoing(const Timestamp& cutTime) {
    const auto firstKept = firstKeptAt(cutTime);
    outgoing_.reserve(pending_.size());
    for (auto message = pending_.begin(); message != firstKept; ++message) {
        outgoing_.push_back(message->takeImage());
    }
    outgoing_.insert(outgoing_.end(), firstKept, pending_.end());
}

void FragmentRecorder::appendEntry(const FragmentEvent& event, std::uint64_t afraOffset) {
    const std::uint32_t segment = segmenter_.currentSegment();
    index_.fillMissingFragments(event.fragmentNumber, segment);
    kzs::AfraEntry entry;
    entry.time = event.start;
    entry.segment = segment;
    entry.fragment = event.fragmentNumber;
    entry.afraOffset = afraOffset;
    index_.globalEntries.push_back(entry);
}

void FragmentRecorder::finishIndexFile() {
    writeIndexFile();
    indexFile_.close();
}

void FragmentRecorder::writeIndexFile() {
    indexFile_.writeIndexFile(index_, segmenter_.currentSegment());
}

kzspkgutil::MessageList::iterator FragmentRecorder::firstKeptAt(const Timestamp& cutTime) {
    // On purpose: the walk stops at the first message that stays; one behind it stays too, even
    // if its time is before the cut.
    // Pinned by FragmentRecorderTest.MessagesBeforeTheCutAreDroppedUpToTheFirstThatStays.
    return std::find_if(
        pending_.begin(), pending_.end(),
        [&](const kzspkgutil::TCMessage& message) { return message.getSampleTime() >= cutTime; });
}

void FragmentRecorder::prunePending(const Timestamp& cutTime) {
    const auto firstKept = firstKeptAt(cutTime);
    prunedBytes_ += bytesOf(pending_.begin(), firstKept);
    pending_.erase(pending_.begin(), firstKept);
}

std::uint64_t FragmentRecorder::bytesKept() const {
    return prunedBytes_ + bytesOf(pending_.begin(), pending_.end());
}

}  // namespace torvo::offline
