#include "kzm/impl/BoxIterator.h"

namespace qlix::kzm::impl {

BoxIterator::BoxIterator(Box& parent, std::size_t index) : parent_(parent), index_(index) {
    fetch();
}

bool BoxIterator::fetch() {
    current_ = parent_.child(index_);
    return current_ != nullptr;
}

void BoxIterator::next() {
    if (!hasCurrent()) return;
    ++index_;
    settle();
}

void BoxIterator::settle() { fetch(); }

BoxIteratorByType::BoxIteratorByType(Box& parent, std::uint32_t code, std::size_t index)
    : BoxIterator(parent, index), code_(code) {
    BoxIteratorByType::settle();
}

void BoxIteratorByType::settle() {
    while (fetch() && current()->type() != code_) skip();
}

ReverseBoxIterator::ReverseBoxIterator(Box& parent)
    : parent_(parent), index_(parent.childCount() > 0 ? parent.childCount() - 1 : 0) {
    fetch();
}

bool ReverseBoxIterator::fetch() {
    current_ = index_ > 0 ? parent_.heldChild(index_) : nullptr;
    return current_ != nullptr;
}

void ReverseBoxIterator::next() {
    if (!hasCurrent()) return;
    --index_;
    settle();
}

void ReverseBoxIterator::settle() { fetch(); }

ReverseBoxIteratorByType::ReverseBoxIteratorByType(Box& parent, std::uint32_t code)
    : ReverseBoxIterator(parent), code_(code) {
    ReverseBoxIteratorByType::settle();
}

void ReverseBoxIteratorByType::settle() {
    while (fetch() && current()->type() != code_) skip();
}

}  // namespace qlix::kzm::impl
