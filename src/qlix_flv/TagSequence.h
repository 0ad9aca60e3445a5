#pragma once

#include <memory>
#include <optional>

#include "qlix_flv/Failure.h"
#include "qlix_flv/TagWalk.h"

namespace qlix::flv {

/// What a tag iterator gives out, one tag after the other.
class TagSequence {
public:
    TagSequence() = default;
    virtual ~TagSequence() = default;
    TagSequence(const TagSequence&) = delete;
    TagSequence& operator=(const TagSequence&) = delete;

    /// True while `next` has a tag, or a failure that it hasn't told yet.
    virtual bool hasMore() = 0;
    /// Fails with kQlixFLVNoMoreEntries at the end, and with what the file's damage asks for.
    virtual TagHeader next() = 0;
};

/// Tags as a walk brings them, held one ahead.
template <class Walk>
class WalkedTags final : public TagSequence {
public:
    explicit WalkedTags(const Walk& walk) : walk_(walk) {}

    bool hasMore() override {
        lookAhead();
        return ahead_.has_value() || (failure_ && !isFailureTold_);
    }

    TagHeader next() override {
        lookAhead();
        if (ahead_) {
            const TagHeader tag = *ahead_;
            ahead_.reset();
            return tag;
        }
        if (!failure_) fail(kQlixFLVNoMoreEntries);
        isFailureTold_ = true;
        throw *failure_;
    }

private:
    void lookAhead() {
        if (ahead_ || failure_ || isAtEnd_) return;
        try {
            ahead_ = walk_.next();
            isAtEnd_ = !ahead_;
        } catch (const Failure& failure) {
            failure_ = failure;
        }
    }

    Walk walk_;
    std::optional<TagHeader> ahead_;
    std::optional<Failure> failure_;
    bool isFailureTold_ = false;
    bool isAtEnd_ = false;
};

}  // namespace qlix::flv
