#include "kzm/impl/KZMTrack.h"

#include <algorithm>
#include <limits>

#include "kzm/ErrorCode.h"
#include "kzm/impl/ElstBox.h"
#include "kzm/impl/FragmentIndex.h"
#include "kzm/impl/HdlrBox.h"
#include "kzm/impl/MdhdBox.h"
#include "kzm/impl/MoovBox.h"
#include "kzm/impl/Rescale.h"
#include "kzm/impl/SdtpBox.h"
#include "kzm/impl/StblBox.h"
#include "kzm/impl/StsdBox.h"
#include "kzm/impl/StszBox.h"
#include "kzm/impl/SttsBox.h"
#include "kzm/impl/TkhdBox.h"
#include "kzm/impl/TrakBox.h"

namespace qlix::kzm::impl {
namespace {

constexpr std::uint32_t kHasDependencies = 1;

void takeTrackHeader(const TkhdBox& tkhd, std::uint32_t movieTimescale, TrackRecord& record) {
    const TrackHeader& header = tkhd.track();
    record.flags = tkhd.flags();
    record.trackId = header.trackId;
    record.width = static_cast<float>(header.width);
    record.height = static_cast<float>(header.height);
    record.volume = static_cast<float>(header.volume);
    record.duration = rescale(header.duration, movieTimescale, record.timescale);
}

void takeMediaHeader(const MdhdBox& mdhd, TrackRecord& record) {
    const MediaHeader& header = mdhd.media();
    record.timescale = header.timescale;
    record.creationDate = header.creationDate;
    record.modificationDate = header.modificationDate;
    std::copy(header.language.begin(), header.language.end(), record.language);
}

void takeTables(const StblBox& stbl, TrackRecord& record) {
    if (stbl.sdtp() != nullptr) record.optionBits |= kHasDependencies;
    if (stbl.stsd() == nullptr) return;
    record.descriptionCount = static_cast<std::uint32_t>(stbl.stsd()->entries().size());
    record.largestDataLength = static_cast<std::uint32_t>(stbl.stsd()->largestDataSize());
}

}  // namespace

KZMTrack::KZMTrack(const MoovBox& moov, const TrakBox& trak, FragmentIndex& fragments)
    : trak_(trak), fragments_(fragments), isFragmented_(moov.isFragmented()) {
    if (moov.mvhd() == nullptr) raise(ErrorCode::noMovieHeader);
    movieTimescale_ = moov.mvhd()->movie().timescale;
    record_.handler = trak.handler();
    if (trak.mdhd() != nullptr) takeMediaHeader(*trak.mdhd(), record_);
    if (movieTimescale_ == 0 || record_.timescale == 0) raise(ErrorCode::noTimescale);
    if (trak.tkhd() != nullptr) takeTrackHeader(*trak.tkhd(), movieTimescale_, record_);
    if (trak.hdlr() != nullptr) record_.handlerName = std::string(trak.hdlr()->name());
    if (trak.stbl() != nullptr) takeTables(*trak.stbl(), record_);
    if (trak.elst() != nullptr) {
        record_.emptyEditCount = static_cast<std::uint32_t>(trak.elst()->emptyEditCount());
    }
}

bool KZMTrack::beginsInTables() const {
    const StblBox* stbl = trak_.stbl();
    return isFragmented_ && stbl != nullptr && stbl->stsz() != nullptr &&
           stbl->stsz()->sampleCount() > 0 && stbl->stts() != nullptr &&
           !stbl->stts()->rows().empty();
}

std::uint32_t KZMTrack::sampleCount() const {
    std::uint64_t count = fragments_.sampleCount(record_.trackId);
    const StblBox* stbl = trak_.stbl();
    if (stbl != nullptr && stbl->stsz() != nullptr) count += stbl->stsz()->sampleCount();
    return static_cast<std::uint32_t>(
        std::min<std::uint64_t>(count, std::numeric_limits<std::uint32_t>::max()));
}

const StsdBox& KZMTrack::descriptions() const {
    const StsdBox* stsd = trak_.stsd();
    if (stsd == nullptr) raise(ErrorCode::noDescriptionList);
    return *stsd;
}

std::size_t KZMTrack::descriptionCount() const { return descriptions().entries().size(); }

const SampleDescriptor& KZMTrack::description(std::size_t index) const {
    if (index >= descriptionCount()) raise(ErrorCode::badArgument);
    return *descriptions().description(static_cast<std::uint32_t>(index + 1));
}

const SampleDescriptor* KZMTrack::descriptionAt(std::uint32_t index) const {
    const StsdBox* stsd = trak_.stsd();
    return stsd == nullptr || index == 0 ? nullptr : stsd->description(index);
}

}  // namespace qlix::kzm::impl
