#pragma once

#include "kzm/impl/Box.h"

namespace qlix::kzm::impl {

/// Walks the children of a box. Over a RootBox it reads the file as it goes.
///
/// The parent outlives the iterator. `current` is null at the end.
class BoxIterator {
public:
    explicit BoxIterator(Box& parent, std::size_t index = 0);
    virtual ~BoxIterator() = default;

    Box* current() const { return current_; }
    bool hasCurrent() const { return current_ != nullptr; }
    std::size_t index() const { return index_; }
    void next();

protected:
    /// Makes the child at the index current, or the next one that is wanted.
    virtual void settle();
    bool fetch();
    void skip() { ++index_; }

private:
    Box& parent_;
    std::size_t index_;
    Box* current_ = nullptr;
};

/// Walks the children of one code.
class BoxIteratorByType : public BoxIterator {
public:
    BoxIteratorByType(Box& parent, std::uint32_t code, std::size_t index = 0);

protected:
    void settle() override;

private:
    std::uint32_t code_;
};

/// Walks the children that are held, from the last one down.
///
/// On purpose: the index 0 counts as the end, so the first child never comes. It is a header box
/// that nobody looks for backwards. Pinned by BoxIteratorTest.NeverGivesTheFirstChildBackwards.
class ReverseBoxIterator {
public:
    explicit ReverseBoxIterator(Box& parent);
    virtual ~ReverseBoxIterator() = default;

    Box* current() const { return current_; }
    bool hasCurrent() const { return current_ != nullptr; }
    std::size_t index() const { return index_; }
    void next();

protected:
    virtual void settle();
    bool fetch();
    void skip() { --index_; }

private:
    Box& parent_;
    std::size_t index_;
    Box* current_ = nullptr;
};

/// Walks the children of one code from the last one down.
class ReverseBoxIteratorByType : public ReverseBoxIterator {
public:
    ReverseBoxIteratorByType(Box& parent, std::uint32_t code);

protected:
    void settle() override;

private:
    std::uint32_t code_;
};

}  // namespace qlix::kzm::impl
