#include "kzs/AudioFragmenter.h"

#include "kzs/FragmentGrid.h"

namespace torvo::kzs {

AudioFragmenter::AudioFragmenter(std::uint32_t fragmentDuration, bool checkFirstCut)
    : fragmentDuration_(fragmentDuration), checkFirstCut_(checkFirstCut) {}

FragmentEvent AudioFragmenter::addSample(const FragmenterSample& sample) {
    FragmentEvent event;
    if (sample.trackKind == FragmenterSample::kVideo) {
        event.kind = FragmentEventKind::WrongTrack;
        return event;
    }
    const Timestamp& time = sample.time;
    const std::uint64_t cell = cellOf(time.value, fragmentDuration_);
    if (state_ == 0) {
        currentCell_ = firstOpenCell(time.value, fragmentDuration_);
        firstTime_ = time;
        state_ = 1;
    }
    if (cell > currentCell_) {
        if (state_ == 1) return openFirst(time, cell);
        event = cut(time, cell);
        currentCell_ = cell;
        fragmentStart_ = time;
        return event;
    }
    event.currentCell = cell;
    event.previousCell = currentCell_;
    event.state = state_;
    return event;
}

FragmentEvent AudioFragmenter::openFirst(const Timestamp& time, std::uint64_t cell) {
    const std::uint64_t oldCell = currentCell_;
    currentCell_ = cell;
    fragmentStart_ = time;
    state_ = 2;
    FragmentEvent event;
    event.currentCell = cell;
    const std::uint64_t first =
        rescaleTruncating(firstTime_.value, firstTime_.timescale, time.timescale);
    if (!checkFirstCut_ || time.value == first) {
        event.previousCell = currentCell_;
        event.state = state_;
        return event;
    }
    event.kind = FragmentEventKind::FirstCutMoved;
    event.fragmentNumber = fragmentNumberOf(firstTime_.value, fragmentDuration_);
    event.start = firstTime_;
    event.end = time;
    event.previousCell = oldCell;
    return event;
}

// On purpose: the event's state stays 0 though the fragmenter's is 2.
// Pinned by AudioFragmenterTest.ReportsState0WithEveryCut.
FragmentEvent AudioFragmenter::cut(const Timestamp& end, std::uint64_t cell) const {
    FragmentEvent event;
    event.kind = FragmentEventKind::Complete;
    event.fragmentNumber = fragmentNumberOf(fragmentStart_.value, fragmentDuration_);
    event.start = fragmentStart_;
    event.end = end;
    event.currentCell = cell;
    event.previousCell = currentCell_;
    return event;
}

// On purpose: nothing is added to the last time, so the fragment ends where its last sample
// starts. Pinned by AudioFragmenterTest.EndsExactlyAtTheLastSample.
FragmentEvent AudioFragmenter::finish(const FragmenterSample& lastSample) {
    return cut(lastSample.time, cellOf(lastSample.time.value, fragmentDuration_));
}

}  // namespace torvo::kzs
