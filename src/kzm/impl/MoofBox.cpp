#include "kzm/impl/MoofBox.h"

#include <utility>

#include "kzm/impl/RootBox.h"
#include "kzm/impl/TrafBox.h"

namespace qlix::kzm::impl {
namespace {

/// A box that was read so often stays whole. An edit list may go to one fragment again and again,
/// and with this the work of all readings stays a small multiple of the file's length.
constexpr std::uint32_t kMostReadings = 8;

}  // namespace

void LetMoofGo::operator()(MoofBox* moof) const noexcept { moof->letGo(); }

MoofBox::MoofBox(const BoxContext& context, std::uint32_t sequenceNumber)
    : Box(context, fourCc("moof")), startTimes_(HeapOf<std::uint64_t>(context.allocator)) {
    addChild(makeBox<MfhdBox>(context, sequenceNumber));
}

MoofBox::MoofBox(const BoxContext& context, const BoxHeader& header)
    : Box(context, header), startTimes_(HeapOf<std::uint64_t>(context.allocator)) {
    resetSize();
}

void MoofBox::addChild(BoxPtr child) {
    Box* const added = child.get();
    Box::addChild(std::move(child));
    remember(mfhd_, added);
}

void MoofBox::readChildren(RootBox* root, bool validate) {
    const bool isFirst = readings_ == 0;
    FragmentState state;
    state.moofStart = position();
    std::size_t trafs = 0;
    for (std::size_t i = 0; i < childCount(); ++i) {
        Box& each = *heldChild(i);
        auto* traf = each.type() == fourCc("traf") ? dynamic_cast<TrafBox*>(&each) : nullptr;
        if (traf == nullptr) {
            each.parse(root, validate);
            continue;
        }
        if (!isFirst) {
            if (trafs == startTimes_.size()) raise(ErrorCode::childrenMissing);
            traf->setStartTime(startTimes_[trafs]);
        }
        traf->setFragmentState(&state);
        traf->parse(root, validate);
        traf->setFragmentState(nullptr);
        if (isFirst) startTimes_.push_back(traf->startTime());
        ++trafs;
    }
    if (trafs < startTimes_.size()) raise(ErrorCode::childrenMissing);
    ++readings_;
    // On purpose: a fragment that is the very first box of a file doesn't count for those behind
    // it, since the search for the last fragment of a track never comes to the first child.
    // Pinned by TrafBoxTest.AFragmentThatBeginsTheFileDoesNotCountForLaterOnes.
    if (root == nullptr || root->childCount() == 0) return;
    for (const auto& [trackId, end] : state.endOfTrack) root->setTrackEnd(trackId, end);
}

MoofHold MoofBox::hold(RootBox& root) {
    if (!isWhole_) readAgain(root);
    ++holds_;
    return MoofHold(this);
}

void MoofBox::readAgain(RootBox& root) {
    try {
        root.readAgain(*this);
    } catch (...) {
        empty();
        throw;
    }
    isWhole_ = true;
}

void MoofBox::letGo() noexcept {
    if (--holds_ == 0 && readings_ < kMostReadings) empty();
}

void MoofBox::empty() noexcept {
    isWhole_ = false;
    mfhd_ = nullptr;
    dropChildren();
    resetSize();
}

}  // namespace qlix::kzm::impl
