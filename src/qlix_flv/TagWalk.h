#pragma once

#include <bitset>
#include <cstdint>
#include <limits>
#include <optional>

#include "qlix_flv/Document.h"

namespace qlix::flv {

/// Which tags a walk gives out.
struct TagSelection {
    TagSelection();  ///< every known type, all times

    std::bitset<256> types;
    std::int32_t startMs = std::numeric_limits<std::int32_t>::min();
    std::int32_t endMs = std::numeric_limits<std::int32_t>::max();  ///< inclusive

    bool contains(const TagHeader& tag) const {
        return types.test(tag.type) && tag.timeMs >= startMs && tag.timeMs <= endMs;
    }
};

/// Goes through the tags from the first to the last by their body sizes.
class ForwardWalk {
public:
    ForwardWalk(Document& document, const TagSelection& selection, ReadAhead::Gap gap);

    /// The next selected tag; none at the end of the file. Fails with kQlixFLVCorruptData.
    std::optional<TagHeader> next();
    /// The next tag of any type, selected or not.
    std::optional<TagHeader> step();
    /// Where the next tag is looked for.
    std::uint64_t position() const { return next_; }
    bool selects(const TagHeader& tag) const { return selection_.contains(tag); }

private:
    Document& document_;  // outlives this
    TagSelection selection_;
    ReadAhead::Gap gap_;
    std::uint64_t next_ = 0;
};

/// Goes through the tags from the last to the first by the size words behind them.
class BackwardWalk {
public:
    BackwardWalk(Document& document, const TagSelection& selection);

    /// The selected tag before; none at the beginning. Fails with kQlixFLVNoBackward.
    std::optional<TagHeader> next();

private:
    TagHeader tagBefore(std::uint64_t end);

    Document& document_;  // outlives this
    TagSelection selection_;
    std::uint64_t end_ = 0;
};

}  // namespace qlix::flv
