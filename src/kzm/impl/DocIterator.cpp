#include "kzm/impl/DocIterator.h"

#include <limits>
#include <utility>

#include "kzm/ErrorCode.h"
#include "kzm/impl/ElstBox.h"
#include "kzm/impl/MediaIterCreator.h"
#include "kzm/impl/PresentationIter.h"
#include "kzm/impl/Reader.h"
#include "kzm/impl/TrakBox.h"

namespace qlix::kzm::impl {
namespace {

// In a fragmented movie the last edit may have no duration, or that of the tables: its media was
// not there yet when the list was written, and all of it is meant.
std::vector<Edit> editsOf(const KZMTrack& track) {
    const ElstBox* elst = track.trak().elst();
    if (elst == nullptr) return {};
    std::vector<Edit> edits = elst->edits();
    if (!edits.empty() && !edits.back().isEmpty() && track.isFragmented() &&
        (edits.back().duration == 0 || track.beginsInTables())) {
        edits.back().duration = std::numeric_limits<std::uint64_t>::max();
    }
    return edits;
}

std::unique_ptr<SampleIterator> iteratorOver(const std::shared_ptr<const KZMTrack>& track,
                                             const TimeRange& range, bool ignoreEdits) {
    MediaIterCreator creator(track);
    std::vector<Edit> edits;
    if (!ignoreEdits) edits = editsOf(*track);
    // A list without rows edits nothing.
    if (edits.empty()) return creator.create(range);
    edits = clippedAt(edits, range.start, track->movieTimescale(), track->record().timescale);
    return std::make_unique<PresentationIter>(std::move(edits), mediaTicks(*track, range.end),
                                              std::move(creator));
}

// On purpose: compared exactly, whatever the two timescales.
// Pinned by DocIteratorTest.ComparesTimesOfDifferentTimescalesExactly.
bool isEarlier(const Sample& left, const Sample& right) {
    return left.time * right.timescale < right.time * left.timescale;
}

}  // namespace

DocIterator::DocIterator(std::shared_ptr<Reader> reader,
                         const std::vector<std::shared_ptr<const KZMTrack>>& tracks,
                         const TimeRange& range)
    : reader_(std::move(reader)) {
    for (const auto& track : tracks) {
        std::unique_ptr<SampleIterator> samples =
            iteratorOver(track, range, reader_->ignoresEdits());
        if (!samples->hasSample()) continue;
        // No honest track has more samples than the file has bytes: a damaged one ends there.
        sources_.push_back({std::move(samples), std::nullopt, reader_->fileSize()});
    }
    for (Source& source : sources_) refill(source);
}

void DocIterator::refill(Source& source) {
    source.head.reset();
    if (source.left == 0 || !source.samples->hasSample()) return;
    --source.left;
    source.head = source.samples->next();
}

bool DocIterator::hasSample() {
    for (const Source& source : sources_) {
        if (source.head) return true;
    }
    return false;
}

Sample DocIterator::next() {
    Source* chosen = nullptr;
    for (Source& source : sources_) {
        if (!source.head) continue;
        // On purpose: of equal times the one of the track that comes first.
        // Pinned by DocIteratorTest.InterleavesByTimeAndGivesTiesToTheFirstTrack.
        if (chosen == nullptr || isEarlier(*source.head, *chosen->head)) chosen = &source;
    }
    if (chosen == nullptr) raise(ErrorCode::badArgument);
    Sample sample = std::move(*chosen->head);
    refill(*chosen);
    return sample;
}

}  // namespace qlix::kzm::impl
