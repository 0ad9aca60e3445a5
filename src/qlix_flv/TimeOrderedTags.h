#pragma once

#include <cstdint>
#include <deque>
#include <optional>
#include <vector>

#include "qlix_flv/Failure.h"
#include "qlix_flv/TagSequence.h"

namespace qlix::flv {

/// The selected tags, those of different types merged by time.
///
/// Recorders put audio and video slightly out of order. Tags of one type keep the order of the
/// file; among the types the earlier time goes first, ties as in the file. A tag is given out
/// once the next tag of every type is known, or once the look-ahead is used up: then what is
/// further out of order is given out as it stands. Only headers are held.
class TimeOrderedTags final : public TagSequence {
public:
    /// Headers held at most.
    static constexpr std::size_t kMostTags = 1000;
    /// Bytes of the file looked through at most, behind the oldest tag that is held.
    static constexpr std::uint64_t kMostBytes = std::uint64_t{4} * 1024 * 1024;

    TimeOrderedTags(Document& document, const TagSelection& selection);

    bool hasMore() override;
    TagHeader next() override;

private:
    using Headers = std::deque<TagHeader, MemoryAllocator<TagHeader>>;

    void lookAhead();
    void hold(const TagHeader& tag);
    bool needsMore() const;
    bool isLookAheadUsedUp() const;
    Headers& earliest();

    ForwardWalk walk_;
    std::vector<Headers, MemoryAllocator<Headers>> queues_;  ///< one for each selected type
    std::vector<std::uint8_t, Memory> queueOfType_;          ///< index into `queues_`, by type
    std::size_t held_ = 0;
    std::optional<Failure> failure_;
    bool isFailureTold_ = false;
    bool isAtEnd_ = false;
};

}  // namespace qlix::flv
