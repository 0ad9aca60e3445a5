#include "kzm/impl/Writer.h"

#include <algorithm>
#include <utility>

#include "kzm/Exception.h"
#include "kzm/impl/EditTracker.h"
#include "kzm/impl/MfraBox.h"
#include "kzm/impl/NewTrack.h"
#include "kzm/impl/Rescale.h"
#include "kzm/impl/TfraBox.h"

namespace qlix::kzm::impl {
namespace {

using torvo::kzs::low32;

/// The stream of a new file, open.
std::unique_ptr<QlixKZMIOStream> openFile(QlixIOStream& stream,
                                          const WriterConfiguration& configuration) {
    if (configuration.timescale == 0) raise(ErrorCode::noTimescale);
    auto file = std::make_unique<QlixKZMIOStream>(&stream);
    file->open();
    return file;
}

}  // namespace

Writer::Writer(QlixIOStream& stream, const WriterConfiguration& configuration, Allocator* allocator)
    : mode_(configuration.fragmented ? Mode::fragmented : Mode::plain),
      allocator_(allocator),
      configuration_(configuration),
      file_(openFile(stream, configuration)),
      header_(*file_, allocator, configuration),
      fragmentHead_(*file_),
      fragmentHeap_(allocator) {
    nextOffset_ = header_.end();
    file_->flush();
}

void Writer::requireOpen() const {
    if (!isOpen()) raise(ErrorCode::notOpen);
}

void Writer::noteFailure(std::uint32_t number) {
    if (isOpen() && !leavesWriterUsable(number)) state_ = State::broken;
}

TrackState& Writer::track(std::uint32_t trackId) {
    if (trackId == 0) raise(ErrorCode::badArgument);
    if (trackId > tracks_.size()) raise(ErrorCode::unknownTrack);
    return tracks_[trackId - 1];
}

std::uint32_t Writer::addTrack(const KZMTrackInfo& info, const KZMTrackParams& params,
                               std::uint32_t sampleTableCapacity) {
    return addTrack(info, params, sampleTableCapacity, {});
}

std::uint32_t Writer::addTrack(const KZMTrackInfo& info, const KZMTrackParams& params,
                               std::uint32_t sampleTableCapacity,
                               const std::vector<std::uint32_t>& hintedTracks) {
    requireOpen();
    if (info.timescale == 0) raise(ErrorCode::noTimescale);
    if (info.handlerName == nullptr && info.handlerNameLength > 0) raise(ErrorCode::badArgument);
    if (header_.isPlaced()) raise(ErrorCode::trackAddedTooLate);
    if (tracksReserved_) raise(ErrorCode::trackAddReserved);
    if (mode_ == Mode::reserved) raise(ErrorCode::modeReserved);
    if (mode_ != Mode::plain && mode_ != Mode::fragmented) raise(ErrorCode::modeUnknown);

    TrackState track;
    track.id = header_.trackCount() + 1;
    track.handler = info.handler;
    track.timescale = info.timescale;
    track.defaultDuration = tickRatio(info.timescale, configuration_.timescale);

    TrackSettings settings = settingsOf(info, params);
    settings.trackId = track.id;
    settings.movieTimescale = configuration_.timescale;
    settings.hintedTrackIds = hintedTracks;
    settings.lastSampleDelta = low32(static_cast<std::uint64_t>(track.defaultDuration));
    if (mode_ == Mode::plain) settings.sampleTableCapacity = sampleTableCapacity;
    track.trak = &header_.addTrack(settings, mode_ == Mode::fragmented);

    tracks_.push_back(std::move(track));
    nextOffset_ = header_.end();
    file_->flush();
    return tracks_.back().id;
}

std::uint32_t Writer::addSampleDescription(std::uint32_t trackId,
                                           const SampleDescriptor& description,
                                           const std::vector<std::uint8_t>& data) {
    TrackState& track = this->track(trackId);
    requireOpen();
    if (description.handler != track.handler) raise(ErrorCode::wrongHandler);

    const std::unique_ptr<SampleDescriptor> entry = description.copyOut();
    entry->data = data;
    const std::uint32_t index = track.trak->stsd()->addDescription(*entry);
    track.hasDescription = true;
    if (index != track.descriptionIndex) {
        track.descriptionIndex = index;
        // On purpose: without a new start the next sample is refused.
        // Pinned by SegmentFragmentsTest.AnotherDescriptionOfATrackWithSamplesClosesTheFragment.
        if (fragment_ && track.hasSamples) {
            closeFragment();
        } else if (fragment_) {
            fragment_->setDescriptionIndex(track);
        }
    }
    header_.write();
    file_->flush();
    return index;
}

void Writer::writeSample(std::uint32_t trackId, const KZMSample& sample, SampleBlock block) {
    TrackState& track = this->track(trackId);
    requireOpen();
    check(track, sample, block);
    PendingSample pending = pendingOf(sample, std::move(block));
    const std::int64_t time =
        rescaleSigned(static_cast<std::int64_t>(sample.time), sample.timescale, track.timescale);
    take(track, time, pending);
}

void Writer::check(const TrackState& track, const KZMSample& sample, const SampleBlock& block) {
    if (sample.handler != track.handler) raise(ErrorCode::wrongHandler);
    const bool isMarker = isEndOfEditMarker(sample.kind);
    if (sample.size == 0 && !isMarker) raise(ErrorCode::emptySample);
    if (sample.timescale == 0) raise(ErrorCode::noTimescale);
    if (block.data() == nullptr && !isMarker) raise(ErrorCode::badArgument);
}

Writer::PendingSample Writer::pendingOf(const KZMSample& sample, SampleBlock block) {
    PendingSample out;
    out.size = sample.size;
    out.compositionOffset = sample.compositionOffset;
    out.kind = sample.kind;
    out.block = std::move(block);
    return out;
}

void Writer::take(TrackState& track, std::int64_t time, PendingSample& sample) {
    if (!track.hasDescription) raise(ErrorCode::noDescriptionSet);
    if (!fragmentOpen_) raise(ErrorCode::noFragmentOpen);
    EditTracker edits(track, configuration_.timescale);
    edits.check(time, sample.isMarker());
    edits.noteFirst(time, sample.isMarker());
    if (sample.isMarker()) {
        edits.addMarker(time);
    } else {
        addToFragment(track, static_cast<std::uint64_t>(edits.addSample(time)), sample);
    }
}

void Writer::placeHeader() {
    if (header_.isPlaced()) return;
    header_.place(mode_ == Mode::fragmented);
    nextOffset_ = header_.end();
    file_->flush();
}

/// `time` is that of the track without gaps, here and below.
void Writer::addToFragment(TrackState& track, std::uint64_t time, PendingSample& sample) {
    placeHeader();
    if (!mdat_) {
        mdat_ = makeBox<MdatBox>(contextOf(*file_), buffersData_);
        // Buffered data find their place when the fragment is closed.
        mdat_->setPosition(buffersData_ ? 0 : nextOffset_);
    }
    if (sample.block.data() != nullptr) sample.offset = mdat_->addSample(std::move(sample.block));
    if (mode_ == Mode::plain) {
        addToTables(track, time, sample);
    } else {
        addToMoof(track, time, sample);
    }
}

void Writer::addToTables(TrackState& track, std::uint64_t time, const PendingSample& sample) {
    TableSample row;
    row.size = sample.size;
    row.offset = sample.offset;
    row.decodeTime = time;
    row.compositionOffset = sample.compositionOffset;
    row.kind = sample.kind;
    row.descriptionIndex = track.descriptionIndex;
    track.trak->stbl()->addSample(row);
}

void Writer::beginFragment(std::uint64_t baseOffset) {
    ++sequenceNumber_;
    fragment_ =
        std::make_unique<OpenFragment>(fragmentContext(), sequenceNumber_, baseOffset, tracks_);
    for (TrackState& each : tracks_) {
        each.hasSamples = false;
        each.trunNumber = 0;
        each.sampleNumber = 0;
    }
}

void Writer::addToMoof(TrackState& track, std::uint64_t time, const PendingSample& sample) {
    if (!fragment_) beginFragment(sample.offset);

    FragmentSample row;
    row.decodeTime = time;
    row.size = sample.size;
    row.compositionOffset = sample.compositionOffset;
    row.kind = sample.kind;
    row.offset = sample.offset;
    row.descriptionIndex = track.descriptionIndex;
    switch (fragment_->add(track, row)) {
        case TrafBox::Added::refused:
            closeFragment();
            raise(ErrorCode::noFragmentOpen);
        case TrafBox::Added::newRun:
            ++track.trunNumber;
            track.sampleNumber = 0;
            break;
        case TrafBox::Added::appended:
            break;
    }

    if (!track.hasSamples) patchLastDuration(track, time);
    track.hasSamples = true;
    ++track.sampleNumber;
    if (writesIndex_ && isSyncSample(sample.kind)) {
        // On purpose: the track's id is told for the number of its `traf`, and the run's number is
        // counted one up once more; players search by time.
        // Pinned by PlainWriterTest.EndsAFragmentedFileWithItsRandomAccessPoints.
        track.randomAccess.push_back({time + static_cast<std::uint64_t>(track.gapTotal), 0,
                                      track.id, track.trunNumber + 1, track.sampleNumber});
    }
}

/// Only the next sample tells how long the last one of the track's last fragment really lasts.
void Writer::patchLastDuration(const TrackState& track, std::uint64_t time) {
    if (track.lastEntryOffset == 0) return;
    FieldWriter duration;
    duration.u32(low32(time - track.lastEntryTime));
    const bool isHeld = fragmentHead_.holds(track.lastEntryOffset, duration.size());
    QlixKZMStream& target = isHeld ? static_cast<QlixKZMStream&>(fragmentHead_) : *file_;
    target.seek(track.lastEntryOffset);
    target.write(duration.data(), duration.size());
}

void Writer::closeFragment() {
    fragmentOpen_ = false;
    const bool hasData = mdat_ != nullptr;
    fragmentHead_.flush();  // the durations of the fragment before
    if (hasData) fragmentHead_.begin(nextOffset_);
    beginClosing(hasData);
    settleEdits();
    if (hasData) writeFragment();
    endClosing(hasData);
    fragmentHead_.flush();
    file_->flush();
}

void Writer::beginClosing(bool /*hasData*/) {}

void Writer::endClosing(bool /*hasData*/) {}

void Writer::settleEdits() {
    for (TrackState& each : tracks_) EditTracker(each, configuration_.timescale).settle();
}

void Writer::settleDurations() {
    std::uint64_t longest = 0;
    for (TrackState& each : tracks_) {
        const auto duration = static_cast<std::uint64_t>(
            rescaleSigned(each.end(), each.timescale, configuration_.timescale));
        each.trak->mdhd()->setDuration(static_cast<std::uint64_t>(each.mediaEnd()));
        each.trak->tkhd()->setDuration(duration);
        longest = std::max(longest, duration);
    }
    header_.setDuration(longest);
}

void Writer::writeFragment() {
    settleDurations();
    if (alignTracks()) {
        settleEdits();
        settleDurations();
    }
    header_.write();
    if (!fragment_) {
        writeData();
        return;
    }

    fragment_->settleLastRows(tracks_);
    if (buffersData_) {
        fragment_->place(tracks_, nextOffset_);
        nextOffset_ += fragment_->size();
        mdat_->setPosition(nextOffset_);
        writeData();
        fragment_->moveBase(mdatOffset_);
    } else {
        writeData();
        fragment_->place(tracks_, nextOffset_);
        nextOffset_ += fragment_->size();
    }
    fragment_->write();
    fragment_->noteLastRows(tracks_);
    fragment_.reset();
}

/// Writes the data and gives the samples back to their callers.
void Writer::writeData() {
    mdatOffset_ = mdat_->position();
    mdat_->write();
    nextOffset_ = mdatOffset_ + mdat_->size();
    mdat_.reset();
}

void Writer::flush() {
    requireOpen();
    if (mdat_) {
        closeFragment();
        fragmentOpen_ = true;
    }
    fragmentHead_.flush();
    file_->flush();
}

void Writer::close() {
    if (!file_) return;
    try {
        if (isOpen()) finish();
        state_ = State::closed;
        file_->close();
    } catch (...) {
        state_ = State::broken;
        try {
            file_->close();
        } catch (...) {  // the failure that came first counts
        }
        dropFile();
        throw;
    }
    dropFile();
}

void Writer::finish() {
    closeFragment();
    placeHeader();
    if (writesIndex_) writeIndex();
}

void Writer::writeIndex() {
    const BoxContext context = contextOf(*file_);
    auto mfra = makeBox<MfraBox>(context);
    for (const TrackState& each : tracks_) {
        if (each.handler != fourCc("vide")) continue;
        auto tfra = makeBox<TfraBox>(context, each.id);
        for (const TfraBox::Entry& entry : each.randomAccess) tfra->addEntry(entry);
        mfra->addChild(std::move(tfra));
    }
    mfra->setPosition(nextOffset_);
    mfra->write();
    nextOffset_ += mfra->size();
}

/// Gives back all samples that are still held, and the stream.
void Writer::dropFile() {
    fragment_.reset();
    mdat_.reset();
    file_.reset();
}

}  // namespace qlix::kzm::impl
