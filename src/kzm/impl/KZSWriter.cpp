#include "kzm/impl/KZSWriter.h"

#include <utility>

#include "kzm/ErrorCode.h"
#include "kzm/impl/Rescale.h"
#include "kzm/impl/UnknownFullBox.h"

namespace qlix::kzm::impl {
namespace {

using torvo::kzs::loadU32;

/// Bytes that the description of a hint track may take beyond what was asked for. On purpose just
/// as many as its fields need beside those of other descriptions.
/// Pinned by KZSMediaWriterTest.LeavesRoomInTheHintTrackForEditsAndDescriptions.
constexpr std::uint32_t kHintDescriptionSurplus = 6;

/// The value of the `amto` box among the boxes in `data`; 0 without one.
std::uint32_t timeOriginOf(const std::vector<std::uint8_t>& data) {
    std::size_t at = 0;
    while (data.size() - at >= kBoxHeaderSize) {
        const std::uint8_t* box = data.data() + at;
        if (loadU32(box + 4) == fourCc("amto")) {
            return data.size() - at >= kBoxHeaderSize + 4 ? loadU32(box + kBoxHeaderSize) : 0;
        }
        const std::uint32_t size = loadU32(box);
        if (size < kBoxHeaderSize || size > data.size() - at) break;
        at += size;
    }
    return 0;
}

}  // namespace

KZSWriter::KZSWriter(QlixIOStream& stream, const WriterConfiguration& configuration,
                     Allocator* allocator)
    : Writer(stream, configuration, allocator) {
    mode_ = Mode::fragmented;
    writesIndex_ = false;
    buffersData_ = true;
    fragmentOpen_ = false;
}

std::uint32_t KZSWriter::addHintTrack(const KZMTrackInfo& info, const KZMTrackParams& params,
                                      const std::vector<std::uint32_t>& referenced) {
    requireOpen();
    if (hintTrackId_ != 0) raise(ErrorCode::secondHintTrack);
    if (info.handler != fourCc("hint")) raise(ErrorCode::badArgument);
    for (const std::uint32_t id : referenced) track(id);

    KZMTrackParams roomier = params;
    roomier.descriptionSpace += kHintDescriptionSurplus;
    hintTrackId_ = addTrack(info, roomier, 0, referenced);
    hintTimescale_ = info.timescale;
    return hintTrackId_;
}

std::uint32_t KZSWriter::addSampleDescription(std::uint32_t trackId,
                                              const SampleDescriptor& description,
                                              const std::vector<std::uint8_t>& data) {
    const std::uint32_t index = Writer::addSampleDescription(trackId, description, data);
    if (trackId == hintTrackId_ && description.format == fourCc("rtmp")) {
        timeOrigin_ = timeOriginOf(data);
        timeOriginScale_ = hintTimescale_;
    }
    return index;
}

std::uint64_t KZSWriter::startFragment() {
    requireOpen();
    if (hintTrackId_ == 0) raise(ErrorCode::noHintTrack);
    if (!header().isPlaced()) {
        placeHeader();
    } else if (bootstrap_.data() == nullptr && !mdat_ && afra_) {
        // On purpose: a start behind a start does nothing.
        // Pinned by SegmentFragmentsTest.ASecondStartWithoutSamplesWritesNothing.
        return nextOffset_;
    }
    closeFragment();
    fragmentOpen_ = true;
    afra_ = makeBox<AfraBox>(fragmentContext(), hintTimescale_);
    afra_->setPosition(nextOffset_);
    return nextOffset_;
}

void KZSWriter::setBootstrap(SampleBlock bootstrap) {
    if (!isOpen() || bootstrap.data() == nullptr) raise(ErrorCode::badArgument);
    if (bootstrap_.data() != nullptr) raise(ErrorCode::secondBootstrap);
    bootstrap_ = std::move(bootstrap);
}

void KZSWriter::writeSample(std::uint32_t trackId, const KZMSample& sample, SampleBlock block,
                            bool afraEntry) {
    TrackState& target = track(trackId);
    requireOpen();
    place(target, sample, std::move(block), afraEntry);
}

void KZSWriter::writeHintedSample(std::uint32_t hintId, std::uint32_t mediaId,
                                  const KZMSample& hintSample, const MediaPart& part,
                                  SampleBlock block, bool afraEntry) {
    TrackState& hint = track(hintId);
    TrackState& media = track(mediaId);
    requireOpen();
    const HintBox* references = hint.trak->hint();
    if (references == nullptr || !references->refersTo(mediaId)) {
        raise(ErrorCode::trackNotHinted);
    }
    const std::uint64_t offset = place(hint, hintSample, std::move(block), afraEntry);

    // The media sample is not checked for its size: an end-of-sequence tag has none.
    PendingSample range;
    range.size = part.size;
    range.offset = offset + part.offset;
    range.compositionOffset = hintSample.compositionOffset;
    range.kind = hintSample.kind;
    take(media, timeIn(media, hintSample), range);
}

std::uint64_t KZSWriter::place(TrackState& target, const KZMSample& sample, SampleBlock block,
                               bool afraEntry) {
    check(target, sample, block);
    if (timeOrigin_ == kUnknownOrigin) raise(ErrorCode::noTimeOrigin);
    PendingSample pending = pendingOf(sample, std::move(block));
    take(target, timeIn(target, sample), pending);
    if (afraEntry && afra_ && !pending.isMarker()) {
        // On purpose: the index keeps the origin that the samples lose.
        // Pinned by SegmentEditsTest.TakesTheTimeOriginOffTheSamplesAndLeavesItInTheIndex.
        afra_->addEntry(rescale(sample.time, sample.timescale, afra_->timescale()),
                        pending.offset - mdat_->position());
    }
    return pending.offset;
}

/// The sample's time in ticks of a track, less the time origin.
std::int64_t KZSWriter::timeIn(const TrackState& target, const KZMSample& sample) const {
    const auto time = static_cast<std::int64_t>(sample.time);
    const auto origin = static_cast<std::int64_t>(timeOrigin_);
    return rescaleSigned(time, sample.timescale, target.timescale) -
           rescaleSigned(origin, timeOriginScale_, target.timescale);
}

void KZSWriter::flush() {
    requireOpen();
    if (mdat_) startFragment();
    fragmentHead().flush();
    file().flush();
}

void KZSWriter::beginClosing(bool hasData) {
    if (!afra_ || !hasData) {
        if (bootstrap_.data() != nullptr) raise(ErrorCode::bootstrapWithoutFragment);
        return;
    }
    nextOffset_ += afra_->size();
    if (bootstrap_.data() == nullptr) return;
    UnknownFullBox abst(fragmentContext(), fourCc("abst"), bootstrap_.data(), bootstrap_.size(),
                        nullptr, nullptr);
    abst.setPosition(nextOffset_);
    abst.write();
    fragmentHead().flush();
    nextOffset_ += abst.size();
    bootstrap_ = SampleBlock();
}

bool KZSWriter::alignTracks() {
    if (hintTrackId_ == 0) return false;
    TrackState& hint = track(hintTrackId_);
    bool grew = false;
    for (const std::uint32_t id : hint.trak->hint()->trackIds()) {
        const TrackState& media = track(id);
        const std::int64_t end = rescaleSigned(media.end(), media.timescale, hint.timescale);
        if (end <= hint.end()) continue;
        hint.lastDuration += end - hint.end();
        grew = true;
    }
    return grew;
}

void KZSWriter::endClosing(bool hasData) {
    if (!afra_) return;
    if (hasData) {
        afra_->moveOffsets(mdatOffset_ - afra_->position());
        afra_->write();
    }
    afra_.reset();
}

}  // namespace qlix::kzm::impl
