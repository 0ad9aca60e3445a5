#include "qlix_flv/TimeOrderedTags.h"

#include <algorithm>
#include <limits>
#include <new>

namespace qlix::flv {
namespace {

bool goesBefore(const TagHeader& left, const TagHeader& right) {
    if (left.timeMs != right.timeMs) return left.timeMs < right.timeMs;
    return left.offset < right.offset;
}

}  // namespace

TimeOrderedTags::TimeOrderedTags(Document& document, const TagSelection& selection)
    : walk_(document, selection, ReadAhead::Gap::readThrough),
      queues_(document.memory()),
      queueOfType_(selection.types.size(), 0, document.memory()) {
    for (std::size_t type = 0; type < selection.types.size(); ++type) {
        if (!selection.types.test(type)) continue;
        queueOfType_[type] = static_cast<std::uint8_t>(queues_.size());
        queues_.emplace_back(document.memory());
    }
}

bool TimeOrderedTags::hasMore() {
    lookAhead();
    return held_ > 0 || (failure_ && !isFailureTold_);
}

TagHeader TimeOrderedTags::next() {
    lookAhead();
    if (held_ > 0) {
        Headers& queue = earliest();
        const TagHeader tag = queue.front();
        queue.pop_front();
        --held_;
        return tag;
    }
    if (!failure_) fail(kQlixFLVNoMoreEntries);
    isFailureTold_ = true;
    throw *failure_;
}

void TimeOrderedTags::lookAhead() {
    while (needsMore() && !isLookAheadUsedUp()) {
        try {
            const std::optional<TagHeader> tag = walk_.step();
            isAtEnd_ = !tag;
            if (tag && walk_.selects(*tag)) hold(*tag);
        } catch (const Failure& failure) {
            // What stands before the damage is given out first.
            failure_ = failure;
        } catch (const std::bad_alloc&) {
            // The tag couldn't be held and must not be lost in silence.
            failure_ = Failure{kQlixFLVOutOfMemory};
        }
    }
}

void TimeOrderedTags::hold(const TagHeader& tag) {
    queues_[queueOfType_[tag.type]].push_back(tag);
    ++held_;
}

bool TimeOrderedTags::needsMore() const {
    if (isAtEnd_ || failure_) return false;
    return std::any_of(queues_.begin(), queues_.end(),
                       [](const Headers& queue) { return queue.empty(); });
}

bool TimeOrderedTags::isLookAheadUsedUp() const {
    if (held_ == 0) return false;
    std::uint64_t oldestEnd = std::numeric_limits<std::uint64_t>::max();
    for (const Headers& queue : queues_) {
        if (!queue.empty()) oldestEnd = std::min(oldestEnd, queue.front().end());
    }
    return held_ >= kMostTags || walk_.position() - oldestEnd > kMostBytes;
}

TimeOrderedTags::Headers& TimeOrderedTags::earliest() {
    return *std::min_element(queues_.begin(), queues_.end(),
                             [](const Headers& left, const Headers& right) {
                                 if (left.empty() || right.empty()) return !left.empty();
                                 return goesBefore(left.front(), right.front());
                             });
}

}  // namespace qlix::flv
