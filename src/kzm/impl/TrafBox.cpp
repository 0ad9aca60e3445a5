#include "kzm/impl/TrafBox.h"

#include <utility>
#include <vector>

#include "kzm/ErrorCode.h"
#include "kzm/impl/MoovBox.h"
#include "kzm/impl/MvexBox.h"
#include "kzm/impl/RootBox.h"
#include "kzm/impl/TrexBox.h"

namespace qlix::kzm::impl {
namespace {

using torvo::kzs::low32;

constexpr std::uint64_t kLargestDataOffset = 0xFFFFFFFF;

}  // namespace

TrafBox::TrafBox(const BoxContext& context, std::uint32_t trackId, std::uint64_t baseOffset,
                 std::uint32_t descriptionIndex)
    : Box(context, fourCc("traf")), writingBase_(baseOffset) {
    addChild(makeBox<TfhdBox>(context, trackId, baseOffset, descriptionIndex));
}

TrafBox::TrafBox(const BoxContext& context, const BoxHeader& header) : Box(context, header) {
    resetSize();
}

void TrafBox::addChild(BoxPtr child) {
    Box* const added = child.get();
    Box::addChild(std::move(child));
    remember(tfhd_, added);
    remember(lastRun_, added);
}

TrafBox::Added TrafBox::addSample(const FragmentSample& sample) {
    if (tfhd_->descriptionIndex() != sample.descriptionIndex) return Added::refused;

    TrunBox* const previous = lastRun_;
    if (previous != nullptr && previous->append(sample)) {
        childGrew(previous->bytesPerSample());
        return Added::appended;
    }

    const std::uint64_t dataOffset = sample.offset - writingBase_;
    if (sample.offset < writingBase_ || dataOffset > kLargestDataOffset) {
        raise(ErrorCode::writeFailed);
    }
    auto run = makeBox<TrunBox>(context(), writingBase_, low32(dataOffset));
    run->append(sample);
    if (previous != nullptr) {
        previous->setLastDuration(low32(sample.decodeTime - previous->lastSample().decodeTime));
    }
    // Not by the override, whose casts would be paid for nearly each sample: most begin a run.
    lastRun_ = run.get();
    Box::addChild(std::move(run));
    return Added::newRun;
}

void TrafBox::readChildren(RootBox* root, bool validate) {
    if (tfhd_ == nullptr) raise(ErrorCode::noFragmentHeader);
    tfhd_->parse(root, validate);
    if (root != nullptr) takeDefaults(*root);

    RunDefaults defaults;
    defaults.baseOffset = defaults.nextOffset = baseOffset();
    defaults.duration = tfhd_->defaultDuration();
    defaults.size = tfhd_->defaultSize();
    defaults.flags = tfhd_->defaultFlags();
    if (!startTime_) startTime_ = findStartTime(root);
    std::uint64_t time = *startTime_;
    for (std::size_t i = 0; i < childCount(); ++i) {
        Box& each = *heldChild(i);
        if (each.type() == tfhd_->type()) continue;
        if (auto* run = dynamic_cast<TrunBox*>(&each)) {
            run->setDefaults(defaults);
            run->parse(root, validate);
            time = run->setStartTime(time);
            defaults.nextOffset = run->dataEnd();
        } else {
            each.parse(root, validate);
        }
    }
    if (state_ != nullptr) {
        state_->dataEnd = defaults.nextOffset;
        // On purpose: without a run the track starts again at 0 in the next fragment.
        // Pinned by TrafBoxTest.ATrafWithoutRunsMakesTheNextOneStartAtZero.
        state_->endOfTrack[tfhd_->trackId()] = lastRun_ != nullptr ? time : 0;
    }
    joinRuns();
}

/// Files with a run for each sample are common, and a box takes ten times the memory of its one
/// sample. So what one run can hold is held by one.
void TrafBox::joinRuns() {
    std::vector<TrunBox*> heads;
    std::vector<const TrunBox*> behind;  // of the last head
    std::uint64_t total = 0;             // samples of the last head and those behind it
    const auto join = [&] {
        if (!behind.empty()) heads.back()->takeSamplesOf(behind);
        behind.clear();
    };
    for (std::size_t i = 0; i < childCount(); ++i) {
        auto* run = dynamic_cast<TrunBox*>(heldChild(i));
        if (run == nullptr) continue;
        const bool goesOn = !heads.empty() && heads.back()->isWorthRows() && run->isWorthRows() &&
                            total + run->sampleCount() <= kSanityLimit;
        total = (goesOn ? total : 0) + run->sampleCount();
        if (goesOn) {
            behind.push_back(run);
        } else {
            join();
            heads.push_back(run);
        }
    }
    join();
    if (!heads.empty()) lastRun_ = heads.back();
    auto next = heads.begin();  // they are in the order of the children
    keepChildren([&](const Box& each) {
        if (dynamic_cast<const TrunBox*>(&each) == nullptr) return true;
        if (next == heads.end() || *next != &each) return false;
        ++next;
        return true;
    });
}

/// What the header leaves out stands in the `trex` of the track.
void TrafBox::takeDefaults(RootBox& root) {
    MvexBox* mvex = root.moov() != nullptr ? root.moov()->mvex() : nullptr;
    if (mvex == nullptr) raise(ErrorCode::childrenMissing);
    const TrexBox* trex = mvex->defaultsOf(tfhd_->trackId());
    if (trex == nullptr) raise(ErrorCode::noTrackDefaults);
    tfhd_->fillIn(trex->descriptionIndex(), trex->defaultDuration(), trex->defaultSize(),
                  trex->defaultFlags());
}

/// Without a base of its own a `traf` counts from the `moof` if it says so or is the first one,
/// else from where the data of the one before it ends.
std::uint64_t TrafBox::baseOffset() const {
    if (tfhd_->has(TfhdBox::kBaseDataOffsetPresent) || state_ == nullptr) {
        return tfhd_->baseDataOffset();
    }
    if (tfhd_->has(TfhdBox::kDefaultBaseIsMoof) || !state_->dataEnd) return state_->moofStart;
    return *state_->dataEnd;
}

/// A track goes on where an earlier `traf` of this `moof`, or its last fragment, ended.
std::uint64_t TrafBox::findStartTime(RootBox* root) const {
    const std::uint32_t trackId = tfhd_->trackId();
    if (state_ != nullptr) {
        const auto found = state_->endOfTrack.find(trackId);
        if (found != state_->endOfTrack.end()) return found->second;
    }
    return root != nullptr ? root->trackEnd(trackId) : 0;
}

}  // namespace qlix::kzm::impl
