#include "kzm/impl/FragmentedTrackIterator.h"

#include <utility>

#include "kzm/ErrorCode.h"
#include "kzm/impl/TfhdBox.h"
#include "kzm/impl/TrafBox.h"
#include "kzm/impl/TrunBox.h"

namespace qlix::kzm::impl {
namespace {

// In the flags of a sample: it depends on others, or it is none to start at. On purpose either
// bit alone denies a sync sample. Pinned by FragmentedTrackIteratorTest.TellsSyncSamplesByTwoFlags.
constexpr std::uint32_t kDependsOnOthers = 0x01000000;
constexpr std::uint32_t kIsNoSync = 0x00010000;

}  // namespace

FragmentedTrackIterator::FragmentedTrackIterator(std::shared_ptr<const KZMTrack> track,
                                                 const TimeRange& range)
    : handle_(std::move(track)), track_(*handle_.handle()), end_(mediaTicks(track_, range.end)) {
    const std::uint64_t start = mediaTicks(track_, range.start);
    if (start < end_) place(start);
}

// Goes to the first sample at or behind `start`, beginning with the first fragment that holds it.
void FragmentedTrackIterator::place(std::uint64_t start) {
    entry_ = track_.fragments().firstHolding(track_.record().trackId, start);
    enterTraf();
    while (run_ != nullptr) {
        position_ = run_->firstAtOrAfter(start);
        if (position_ < run_->sampleCount()) return;
        settle();
    }
}

// Goes to the first run of the entry, if there is one.
void FragmentedTrackIterator::enterTraf() {
    run_ = nullptr;
    position_ = 0;
    child_ = 0;
    const FragmentIndex::Entry* entry = track_.fragments().entry(track_.record().trackId, entry_);
    if (entry == nullptr) {
        fragment_ = {};
        return;
    }
    sequenceNumber_ = entry->sequenceNumber;
    fragment_ = track_.fragments().enter(*entry);
    // Every entry had samples when it was read first.
    if (!findRun()) raise(ErrorCode::childrenMissing);
}

// Takes the run at the child or behind it; answers false when the traf has none left.
bool FragmentedTrackIterator::findRun() {
    for (; child_ < fragment_.traf->childCount(); ++child_) {
        const auto* run = dynamic_cast<const TrunBox*>(fragment_.traf->heldChild(child_));
        if (run == nullptr || run->sampleCount() == 0) continue;
        run_ = run;
        position_ = 0;
        return true;
    }
    return false;
}

// Goes on to the next run when the current one is used up.
void FragmentedTrackIterator::settle() {
    if (run_ == nullptr || position_ < run_->sampleCount()) return;
    ++child_;
    if (findRun()) return;
    ++entry_;
    enterTraf();
}

bool FragmentedTrackIterator::hasSample() {
    return run_ != nullptr && run_->sample(position_).decodeTime < end_ &&
           track_.descriptionAt(fragment_.traf->tfhd()->descriptionIndex()) != nullptr;
}

Sample FragmentedTrackIterator::next() {
    if (!hasSample()) raise(ErrorCode::badArgument);
    const TrunSample row = run_->sample(position_);
    Sample sample;
    sample.size = row.size;
    sample.time = row.decodeTime;
    sample.timescale = track_.record().timescale;
    sample.compositionOffset = row.compositionOffset;
    sample.handler = track_.record().handler;
    if ((row.flags & (kDependsOnOthers | kIsNoSync)) == 0) sample.flags = kSampleIsSync;
    sample.fileOffset = row.offset;
    sample.sequenceNumber = sequenceNumber_;
    sample.description = track_.descriptionAt(fragment_.traf->tfhd()->descriptionIndex());
    sample.track = handle_;
    ++position_;
    settle();
    return sample;
}

}  // namespace qlix::kzm::impl
