#include "kzs/AVFragmenter.h"

#include "kzs/FragmentGrid.h"

namespace torvo::kzs {

/// One sample as the states look at it.
struct AVFragmenter::Step {
    Timestamp time;
    std::uint64_t cell;
    bool isKey;    // a key frame of a video track
    bool crosses;  // lies in a later cell than the samples before it
};

AVFragmenter::AVFragmenter(std::uint32_t fragmentDuration, bool checkFirstCut)
    : fragmentDuration_(fragmentDuration), checkFirstCut_(checkFirstCut) {}

FragmentEvent AVFragmenter::addSample(const FragmenterSample& sample) {
    if (state_ == 0) {
        firstTime_ = sample.time;
        currentCell_ = firstOpenCell(sample.time.value, fragmentDuration_);
        state_ = 1;
    }
    const std::uint64_t cell = cellOf(sample.time.value, fragmentDuration_);
    const bool isKey = sample.trackKind == FragmenterSample::kVideo && sample.isKeyFrame;
    const Step step{sample.time, cell, isKey, cell > currentCell_};
    if (state_ == 1) return inFirstCell(step);
    if (state_ == 2) return beforeFirstKeyFrame(step);
    // On purpose: only from state 3 on. Nothing of the length zero can be closed, so that audio
    // and a key frame of equal times don't make an empty fragment.
    // Pinned by AVFragmenterTest.MakesNoFragmentOfLengthZero.
    if (startsTheFragment(step.time)) return nothing(step);
    switch (state_) {
        case 4:
            return insideTheCell(step);
        case 5:
            return behindASpan(step);
        case 6:
            return inASpan(step);
        case 7:
            return inASpanFromAKeyFrame(step);
        default:
            return pastTheCell(step);
    }
}

FragmentEvent AVFragmenter::inFirstCell(const Step& step) {
    if (!step.crosses) return nothing(step);
    moveCells(step.cell);
    if (step.isKey) {
        fragmentStart_ = step.time;
        return firstCut(step);
    }
    // On purpose: the start keeps its timescale, which is 1000 here.
    // Pinned by AVFragmenterTest.AStartOnTheGridKeepsTheTimescaleItHad.
    fragmentStart_.value = (step.cell - 1) * fragmentDuration_;
    fragmentStart_.flags[0] = 0;
    fragmentStart_.flags[1] = 0;
    state_ = 2;
    return nothing(step);
}

// On purpose: however many lines are crossed, only a key frame moves on, which keeps the first
// fragment whole. Pinned by AVFragmenterTest.ClosesNothingBeforeTheFirstKeyFrame.
FragmentEvent AVFragmenter::beforeFirstKeyFrame(const Step& step) {
    if (!step.isKey) return nothing(step);
    moveCells(step.cell);
    return firstCut(step);
}

FragmentEvent AVFragmenter::pastTheCell(const Step& step) {
    if (step.crosses) {
        return closeOnGrid(FragmentEventKind::SpanStart, step, step.isKey ? 7 : 6);
    }
    return step.isKey ? closeAtSample(FragmentEventKind::Complete, step) : nothing(step);
}

FragmentEvent AVFragmenter::insideTheCell(const Step& step) {
    if (!step.crosses) return nothing(step);
    if (step.isKey) return closeAtSampleMovingCells(FragmentEventKind::Complete, step);
    moveCells(step.cell);
    state_ = 3;
    return nothing(step);
}

FragmentEvent AVFragmenter::behindASpan(const Step& step) {
    if (!step.crosses) return nothing(step);
    if (step.isKey) return closeOnGrid(FragmentEventKind::Complete, step, 5);
    moveCells(step.cell);
    state_ = 3;
    return nothing(step);
}

FragmentEvent AVFragmenter::inASpan(const Step& step) {
    if (step.crosses) {
        return closeOnGrid(FragmentEventKind::SpanCell, step, step.isKey ? 7 : 6);
    }
    return step.isKey ? closeAtSample(FragmentEventKind::SpanEnd, step) : nothing(step);
}

// On purpose: a second key frame inside the cell changes nothing.
// Pinned by AVFragmenterTest.IgnoresFurtherKeyFramesInACellOpenedByOne.
FragmentEvent AVFragmenter::inASpanFromAKeyFrame(const Step& step) {
    if (!step.crosses) return nothing(step);
    return closeOnGrid(FragmentEventKind::SpanEnd, step, step.isKey ? 5 : 8);
}

bool AVFragmenter::startsTheFragment(const Timestamp& time) const {
    return rescaleTruncating(time.value, time.timescale, fragmentStart_.timescale) ==
           fragmentStart_.value;
}

void AVFragmenter::moveCells(std::uint64_t cell) {
    previousCell_ = currentCell_;
    currentCell_ = cell;
}

// On purpose: an event of no consequence tells the cells and the state all the same.
// Pinned by TransitionTest.AnswersAndMovesAsItsRowSays.
FragmentEvent AVFragmenter::nothing(const Step& step) const {
    FragmentEvent event;
    event.currentCell = step.cell;
    event.previousCell = currentCell_;
    event.state = state_;
    return event;
}

FragmentEvent AVFragmenter::firstCut(const Step& step) {
    state_ = 4;
    const std::uint64_t first =
        rescaleTruncating(firstTime_.value, firstTime_.timescale, step.time.timescale);
    if (!checkFirstCut_ || step.time.value == first) return nothing(step);
    fragmentStart_ = step.time;
    FragmentEvent event;
    event.kind = FragmentEventKind::FirstCutMoved;
    event.fragmentNumber = fragmentNumberOf(step.time.value, fragmentDuration_);
    event.start = step.time;
    event.end = step.time;
    event.currentCell = step.cell;
    event.previousCell = previousCell_;
    event.state = state_;
    return event;
}

FragmentEvent AVFragmenter::closing(FragmentEventKind kind, const Step& step,
                                    const Timestamp& end) const {
    FragmentEvent event;
    event.kind = kind;
    event.fragmentNumber = fragmentNumberOf(fragmentStart_.value, fragmentDuration_);
    event.start = fragmentStart_;
    event.end = end;
    event.currentCell = step.cell;
    event.previousCell = currentCell_;
    return event;
}

// On purpose: the cells stay. Pinned by AVFragmenterTest.KeepsTheCellsWhenItClosesAtASample.
FragmentEvent AVFragmenter::closeAtSample(FragmentEventKind kind, const Step& step) {
    FragmentEvent event = closing(kind, step, step.time);
    fragmentStart_ = step.time;
    event.state = state_ = 4;
    return event;
}

FragmentEvent AVFragmenter::closeAtSampleMovingCells(FragmentEventKind kind, const Step& step) {
    FragmentEvent event = closeAtSample(kind, step);
    moveCells(step.cell);
    return event;
}

// On purpose: the line is that of the previous cell as it was before this sample, so a span lags
// behind its samples by one cell. Pinned by AVFragmenterTest.ClosesOnTheLineOfThePreviousCell.
FragmentEvent AVFragmenter::closeOnGrid(FragmentEventKind kind, const Step& step,
                                        std::int32_t newState) {
    const Timestamp line = milliseconds(previousCell_ * fragmentDuration_);
    FragmentEvent event = closing(kind, step, line);
    moveCells(step.cell);
    fragmentStart_ = line;
    event.state = state_ = newState;
    return event;
}

FragmentEvent AVFragmenter::finish(const FragmenterSample& lastSample) {
    FragmentEvent event;
    switch (state_) {
        case 1:
        case 2:
            // On purpose: nothing was closed yet, so the bootstrap has an end mark and no fragment.
            // Pinned by AVFragmenterTest.FinishesByItsState.
            event.kind = FragmentEventKind::SpanCell;
            break;
        case 3:
        case 4:
        case 8:
            event.kind = FragmentEventKind::Complete;
            break;
        case 6:
        case 7:
            event.kind = FragmentEventKind::SpanEnd;
            break;
        default:
            // On purpose: 5, too, though a fragment is open. Whoever writes has to look after the
            // tail. Pinned by AVFragmenterTest.FinishesWithNothingInStatesZeroAndFive.
            return event;
    }
    const Timestamp& last = lastSample.time;
    event.fragmentNumber = fragmentNumberOf(fragmentStart_.value, fragmentDuration_);
    event.start = fragmentStart_;
    event.end = last;
    // On purpose: one millisecond behind the last sample, so that it lies inside.
    // Pinned by AVFragmenterTest.FinishesByItsState.
    event.end.value += last.timescale / 1000;
    event.currentCell = cellOf(last.value, fragmentDuration_);
    event.previousCell = currentCell_;
    event.state = -1;
    return event;
}

}  // namespace torvo::kzs
