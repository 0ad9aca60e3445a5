#include "kzm/impl/TrafBoxIterator.h"

#include "kzm/impl/TrafBox.h"

namespace qlix::kzm::impl {
namespace {

bool isOfTrack(const Box& box, std::uint32_t trackId) {
    const auto* traf = dynamic_cast<const TrafBox*>(&box);
    return traf != nullptr && traf->tfhd() != nullptr && traf->tfhd()->trackId() == trackId;
}

}  // namespace

TrafBoxIterator::TrafBoxIterator(Box& parent, std::uint32_t trackId, std::size_t index)
    : BoxIterator(parent, index), trackId_(trackId) {
    TrafBoxIterator::settle();
}

void TrafBoxIterator::settle() {
    while (fetch() && !isOfTrack(*current(), trackId_)) skip();
}

ReverseTrafBoxIterator::ReverseTrafBoxIterator(Box& parent, std::uint32_t trackId)
    : ReverseBoxIterator(parent), trackId_(trackId) {
    ReverseTrafBoxIterator::settle();
}

void ReverseTrafBoxIterator::settle() {
    while (fetch() && !isOfTrack(*current(), trackId_)) skip();
}

}  // namespace qlix::kzm::impl
