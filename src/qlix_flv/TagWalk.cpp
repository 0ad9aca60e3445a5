#include "qlix_flv/TagWalk.h"

#include "qlix_flv/Failure.h"

namespace qlix::flv {

TagSelection::TagSelection() {
    for (std::uint8_t type : {kAudioTag, kVideoTag, kScriptAmf3Tag, kScriptTag}) types.set(type);
}

ForwardWalk::ForwardWalk(Document& document, const TagSelection& selection, ReadAhead::Gap gap)
    : document_(document),
      selection_(selection),
      gap_(gap),
      next_(document.dataOffset() + kSizeWord) {}

std::optional<TagHeader> ForwardWalk::next() {
    std::optional<TagHeader> tag = step();
    while (tag && !selection_.contains(*tag)) tag = step();
    return tag;
}

std::optional<TagHeader> ForwardWalk::step() {
    const std::optional<TagHeader> tag = document_.tagAt(next_, gap_);
    // The size word is stepped over unread: a wrong or a missing one harms nobody here.
    if (tag) next_ = tag->end() + kSizeWord;
    return tag;
}

BackwardWalk::BackwardWalk(Document& document, const TagSelection& selection)
    : document_(document), selection_(selection), end_(document.size()) {}

std::optional<TagHeader> BackwardWalk::next() {
    const std::uint64_t firstTag = document_.dataOffset() + kSizeWord;
    while (end_ > firstTag) {
        const TagHeader tag = tagBefore(end_);
        end_ = tag.offset;
        if (selection_.contains(tag)) return tag;
    }
    return std::nullopt;
}

TagHeader BackwardWalk::tagBefore(std::uint64_t end) {
    const std::uint64_t room = end - document_.dataOffset() - kSizeWord;
    if (room < kSizeWord) fail(kQlixFLVNoBackward);
    const std::uint32_t length = document_.sizeWordBefore(end);
    if (length < kTagHeaderSize || length > room - kSizeWord) fail(kQlixFLVNoBackward);
    const TagHeader tag = document_.headerAt(end - kSizeWord - length, ReadAhead::Gap::skip);
    if (tag.end() != end - kSizeWord) fail(kQlixFLVNoBackward);
    return tag;
}

}  // namespace qlix::flv
