#pragma once

#include <cstdint>
#include <deque>
#include <vector>

#include "kzs/BootstrapInfo.h"

namespace torvo::kzs {

/// Every fragment of a presentation, in the order in which they were added: two bytes for one that
/// starts about where the fragments of equal duration before it lead to, a whole entry for others.
class FragmentList {
public:
    void append(const FragmentRunEntry& entry);
    /// What was appended, made anew at each call.
    std::vector<FragmentRunEntry> entries() const;

private:
    /// Fragments that differ from the first one in their number, one more from each to the next,
    /// and in their time.
    struct Stretch {
        FragmentRunEntry first;
        std::uint32_t more;  // fragments behind the first
    };

    std::deque<Stretch> stretches_;
    std::deque<std::int16_t> deviations_;  // from an even spacing, of those behind the first
};

}  // namespace torvo::kzs
