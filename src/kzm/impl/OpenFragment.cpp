#include "kzm/impl/OpenFragment.h"

#include <utility>

#include "kzm/impl/TrackState.h"

namespace qlix::kzm::impl {

using torvo::kzs::low32;

OpenFragment::OpenFragment(const BoxContext& context, std::uint32_t sequenceNumber,
                           std::uint64_t baseOffset, const std::vector<TrackState>& tracks)
    : moof_(makeBox<MoofBox>(context, sequenceNumber)) {
    for (const TrackState& track : tracks) {
        waiting_.push_back(makeBox<TrafBox>(context, track.id, baseOffset, track.descriptionIndex));
        trafs_.push_back(waiting_.back().get());
    }
}

TrafBox& OpenFragment::trafOf(const TrackState& track) const { return *trafs_[track.id - 1]; }

TrafBox::Added OpenFragment::add(const TrackState& track, const FragmentSample& sample) {
    return trafOf(track).addSample(sample);
}

void OpenFragment::setDescriptionIndex(const TrackState& track) {
    trafOf(track).tfhd()->setDescriptionIndex(track.descriptionIndex);
}

void OpenFragment::settleLastRows(const std::vector<TrackState>& tracks) {
    for (const TrackState& track : tracks) {
        TrunBox* const run = trafOf(track).lastRun();
        if (run == nullptr) continue;
        const auto end = static_cast<std::uint64_t>(track.mediaEnd());
        run->setLastDuration(low32(end - run->lastSample().decodeTime));
    }
}

void OpenFragment::place(std::vector<TrackState>& tracks, std::uint64_t position) {
    for (TrackState& track : tracks) {
        BoxPtrOf<TrafBox> traf = std::move(waiting_[track.id - 1]);
        if (track.hasSamples) {
            moof_->addChild(std::move(traf));
        } else {
            trafs_[track.id - 1] = nullptr;
        }
        for (; track.randomAccessDone < track.randomAccess.size(); ++track.randomAccessDone) {
            track.randomAccess[track.randomAccessDone].moofOffset = position;
        }
    }
    moof_->setPosition(position);
}

void OpenFragment::moveBase(std::uint64_t distance) {
    for (TrafBox* traf : trafs_) {
        if (traf == nullptr) continue;
        traf->tfhd()->setBaseDataOffset(traf->tfhd()->baseDataOffset() + distance);
    }
}

void OpenFragment::noteLastRows(std::vector<TrackState>& tracks) const {
    for (TrackState& track : tracks) {
        if (!track.hasSamples) continue;
        const TrunBox& run = *trafOf(track).lastRun();
        track.lastEntryOffset = run.lastDurationPosition();
        track.lastEntryTime = run.lastSample().decodeTime;
        track.hasSamples = false;
    }
}

}  // namespace qlix::kzm::impl
