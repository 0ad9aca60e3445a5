#pragma once

#include <cstdint>

#include "kzs/Fragmenter.h"

namespace torvo::kzs {

/// Cuts on video key frames; the grid only says when a cut is due.
///
///   state  meaning
///     0    nothing seen
///     1    first sample seen, no grid line crossed yet
///     2    a grid line was crossed without a key frame; the open fragment starts on that line
///     3    the open fragment starts at a key frame and is past its cell: waits for a key frame
///     4    the open fragment starts at a key frame and is inside its cell
///     5    as 7, behind the end of a span: the next key frame past the cell completes
///     6    in a span: the open fragment starts on a grid line, no key frame yet
///     7    in a span: the open fragment starts on a grid line and was opened by a key frame
///     8    as 3, entered from 7
class AVFragmenter final : public Fragmenter {
public:
    /// `fragmentDuration` is in milliseconds and never 0. With `checkFirstCut` a first key frame
    /// that isn't the first sample is reported.
    AVFragmenter(std::uint32_t fragmentDuration, bool checkFirstCut);

    FragmentEvent addSample(const FragmenterSample& sample) override;
    FragmentEvent finish(const FragmenterSample& lastSample) override;

private:
    struct Step;

    FragmentEvent inFirstCell(const Step& step);
    FragmentEvent beforeFirstKeyFrame(const Step& step);
    FragmentEvent pastTheCell(const Step& step);
    FragmentEvent insideTheCell(const Step& step);
    FragmentEvent behindASpan(const Step& step);
    FragmentEvent inASpan(const Step& step);
    FragmentEvent inASpanFromAKeyFrame(const Step& step);

    bool startsTheFragment(const Timestamp& time) const;
    void moveCells(std::uint64_t cell);
    FragmentEvent nothing(const Step& step) const;
    FragmentEvent firstCut(const Step& step);
    FragmentEvent closing(FragmentEventKind kind, const Step& step, const Timestamp& end) const;
    FragmentEvent closeAtSample(FragmentEventKind kind, const Step& step);
    FragmentEvent closeAtSampleMovingCells(FragmentEventKind kind, const Step& step);
    FragmentEvent closeOnGrid(FragmentEventKind kind, const Step& step, std::int32_t newState);

    std::uint32_t fragmentDuration_;
    bool checkFirstCut_;
    std::int32_t state_ = 0;
    Timestamp firstTime_;
    Timestamp fragmentStart_;
    std::uint64_t currentCell_ = 0;
    std::uint64_t previousCell_ = 0;
};

}  // namespace torvo::kzs
