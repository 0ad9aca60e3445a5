#include "kzm/impl/FragmentIndex.h"

#include <algorithm>

#include "kzm/impl/MfhdBox.h"
#include "kzm/impl/MoofBox.h"
#include "kzm/impl/RootBox.h"
#include "kzm/impl/TfhdBox.h"
#include "kzm/impl/TrafBox.h"
#include "kzm/impl/TrunBox.h"

namespace qlix::kzm::impl {

const FragmentIndex::Entry* FragmentIndex::entry(std::uint32_t trackId, std::size_t index) {
    catchUp();
    // References into the map stay good while it grows.
    const std::vector<Entry>& entries = tracks_[trackId].entries;
    while (index >= entries.size()) {
        if (!readOn()) return nullptr;
    }
    return &entries[index];
}

FragmentIndex::Entered FragmentIndex::enter(const Entry& entry) {
    Entered entered;
    entered.hold = entry.moof->hold(root_);
    entered.traf = dynamic_cast<TrafBox*>(entry.moof->child(entry.child));
    if (entered.traf == nullptr) raise(ErrorCode::childrenMissing);
    return entered;
}

std::size_t FragmentIndex::firstHolding(std::uint32_t trackId, std::uint64_t time) {
    catchUp();
    const std::vector<Entry>& entries = tracks_[trackId].entries;
    // The first entry at which the latest end reaches the time reaches it itself.
    const auto found = std::partition_point(entries.begin(), entries.end(),
                                            [time](const Entry& e) { return e.latestEnd < time; });
    auto index = static_cast<std::size_t>(found - entries.begin());
    while (const Entry* each = entry(trackId, index)) {
        if (each->startTime <= time && each->latestEnd >= time) return index;
        ++index;
    }
    return index;
}

std::uint64_t FragmentIndex::sampleCount(std::uint32_t trackId) {
    catchUp();
    const auto found = tracks_.find(trackId);
    return found == tracks_.end() ? 0 : found->second.sampleCount;
}

bool FragmentIndex::readOn() {
    if (root_.child(nextChild_) == nullptr) return false;
    catchUp();
    return true;
}

void FragmentIndex::catchUp() {
    for (; nextChild_ < root_.childCount(); ++nextChild_) {
        auto* moof = dynamic_cast<MoofBox*>(root_.heldChild(nextChild_));
        if (moof == nullptr) continue;
        newest_ = moof->hold(root_);
        take(*moof);
    }
}

void FragmentIndex::take(MoofBox& moof) {
    Entry entry;
    entry.moof = &moof;
    if (moof.mfhd() != nullptr) entry.sequenceNumber = moof.mfhd()->sequenceNumber();
    for (std::size_t i = 0; i < moof.childCount(); ++i) {
        entry.child = static_cast<std::uint32_t>(i);
        if (const auto* traf = dynamic_cast<const TrafBox*>(moof.heldChild(i))) take(*traf, entry);
    }
}

void FragmentIndex::take(const TrafBox& traf, Entry entry) {
    if (traf.tfhd() == nullptr) return;
    TrackFragments& track = tracks_[traf.tfhd()->trackId()];
    bool hasSamples = false;
    for (std::size_t i = 0; i < traf.childCount(); ++i) {
        const auto* run = dynamic_cast<const TrunBox*>(traf.heldChild(i));
        if (run == nullptr || run->sampleCount() == 0) continue;
        if (!hasSamples) entry.startTime = run->sample(0).decodeTime;
        hasSamples = true;
        entry.latestEnd = run->endTime();
        track.sampleCount += run->sampleCount();
    }
    if (!hasSamples) return;
    if (!track.entries.empty()) {
        entry.latestEnd = std::max(entry.latestEnd, track.entries.back().latestEnd);
    }
    track.entries.push_back(entry);
}

}  // namespace qlix::kzm::impl
