#pragma once

#include <cstdint>

#include "kzs/base/Timestamp.h"

namespace torvo::kzs {

/// What a sample, or the end of the input, does to the open fragment.
enum class FragmentEventKind : std::uint32_t {
    None = 0,           ///< nothing happened
    Complete = 1,       ///< a fragment is closed: register it and write it now
    SpanStart = 2,      ///< closed on the grid for want of a key frame: register it, write later
    SpanCell = 3,       ///< a grid cell inside such a stretch is over: it has no data of its own
    SpanEnd = 4,        ///< as SpanCell, and the kept SpanStart is now written up to this end
    FirstCutMoved = 5,  ///< the first cut is not at the first sample; only when asked for
    WrongTrack = 6,     ///< a video sample was given to a fragmenter for audio
};

/// A fragmenter's answer. Cells count from 1 and are a fragment duration long each.
struct FragmentEvent {
    FragmentEventKind kind = FragmentEventKind::None;
    std::uint32_t fragmentNumber = 0;  ///< the cell of the fragment's start, cut to 32 bits
    Timestamp start;
    Timestamp end;
    std::uint64_t currentCell = 0;  ///< the cell of the sample just seen
    std::uint64_t previousCell = 0;
    std::int32_t state = 0;  ///< the state just entered
};

bool operator==(const FragmentEvent& left, const FragmentEvent& right);

}  // namespace torvo::kzs
