#include "kzm/impl/NewTrack.h"

#include <algorithm>
#include <iterator>

#include "kzs/base/ByteOrder.h"

namespace qlix::kzm::impl {
namespace {

constexpr std::uint32_t kHasDependencyTable = 1;  // of KZMTrackInfo::optionBits

}  // namespace

TrackSettings settingsOf(const KZMTrackInfo& info, const KZMTrackParams& params) {
    TrackSettings out;
    out.handler = info.handler;
    out.trackFlags = info.flags;
    out.timescale = info.timescale;
    out.creationDate = info.creationDate;
    out.modificationDate = info.modificationDate;
    out.duration = info.duration;
    out.width = info.width;
    out.height = info.height;
    out.volume = info.volume;
    std::copy(std::begin(info.language), std::end(info.language), out.language.begin());
    if (info.handlerName != nullptr) {
        out.handlerName.assign(info.handlerName, info.handlerNameLength);
    }
    out.hasDependencyTable = (info.optionBits & kHasDependencyTable) != 0;
    out.descriptionSlots = params.initialEntries;
    out.maxEdits = params.maxEdits;
    out.descriptionSpace = params.descriptionSpace;
    return out;
}

std::uint32_t tickRatio(std::uint32_t trackTimescale, std::uint32_t movieTimescale) {
    if (trackTimescale <= movieTimescale) return 1;
    return torvo::kzs::low32((std::uint64_t{trackTimescale} + (movieTimescale - 1) / 2) /
                             movieTimescale);
}

}  // namespace qlix::kzm::impl
