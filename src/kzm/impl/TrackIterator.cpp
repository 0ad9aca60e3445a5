#include "kzm/impl/TrackIterator.h"

#include <utility>

#include "kzm/ErrorCode.h"
#include "kzm/impl/Co64Box.h"
#include "kzm/impl/CttsBox.h"
#include "kzm/impl/SdtpBox.h"
#include "kzm/impl/StblBox.h"
#include "kzm/impl/StcoBox.h"
#include "kzm/impl/StscBox.h"
#include "kzm/impl/StssBox.h"
#include "kzm/impl/StszBox.h"
#include "kzm/impl/SttsBox.h"
#include "kzm/impl/TrakBox.h"

namespace qlix::kzm::impl {
namespace {

const StblBox& tablesOf(const KZMTrack& track) {
    const StblBox* stbl = track.trak().stbl();
    if (stbl == nullptr || stbl->stts() == nullptr || stbl->stsc() == nullptr ||
        stbl->stsz() == nullptr || (stbl->stco() == nullptr && stbl->co64() == nullptr)) {
        raise(ErrorCode::noSampleTables);
    }
    return *stbl;
}

const IChunkOffsetBox& chunkOffsetsOf(const StblBox& stbl) {
    if (stbl.co64() != nullptr) return *stbl.co64();
    return *stbl.stco();
}

}  // namespace

TrackIterator::TrackIterator(std::shared_ptr<const KZMTrack> track, const TimeRange& range)
    : handle_(std::move(track)), track_(*handle_.handle()) {
    const SampleRange samples =
        samplesBetween(tablesOf(track_).stts()->rows(), mediaTicks(track_, range.start),
                       mediaTicks(track_, range.end));
    // Numbers of 32 bits: a table that counts more than that is damaged.
    if (!samples.isEmpty() && samples.first <= 0xFFFFFFFF) place(samples);
}

TrackIterator::~TrackIterator() = default;

void TrackIterator::place(const SampleRange& range) {
    const StblBox& tables = tablesOf(track_);
    const auto first = static_cast<std::uint32_t>(range.first);
    chunks_.emplace(tables.stsc()->rows(), first);
    if (!chunks_->isValid()) return;
    chunk_ = chunks_->chunk();
    chunkOffsets_ = chunkOffsetsOf(tables).offsetsFrom(chunk_);
    sizes_ = tables.stsz()->sizesFrom(chunks_->sample());
    fileOffset_ = chunkOffsets_->offset() + sizes_->skip(first - chunks_->sample());
    chunks_->skipTo(first);

    compositions_.emplace(tables.ctts() != nullptr ? &tables.ctts()->rows() : nullptr, first);
    // On purpose: without the table no sample is a sync sample.
    // Pinned by TrackIteratorTest.HasNoSyncSampleWithoutTheirTable.
    if (tables.stss() != nullptr) syncs_ = tables.stss()->syncSamplesFrom(first);
    if (tables.sdtp() != nullptr) {
        const BoxVector<std::uint8_t>& bytes = tables.sdtp()->bytes();
        dependencyEnd_ = bytes.data() + bytes.size();
        dependency_ = first - 1 < bytes.size() ? bytes.data() + (first - 1) : dependencyEnd_;
    }
    times_.emplace(tables.stts()->rows(), range);
}

bool TrackIterator::hasSample() {
    return times_ && times_->isValid() && sizes_->isValid() && chunks_->isValid() &&
           track_.descriptionAt(chunks_->descriptionIndex()) != nullptr;
}

Sample TrackIterator::next() {
    if (!hasSample()) raise(ErrorCode::badArgument);
    Sample sample;
    sample.size = sizes_->size();
    sample.time = times_->time();
    sample.timescale = track_.record().timescale;
    sample.compositionOffset = compositions_->offset();
    sample.handler = track_.record().handler;
    if (syncs_ && syncs_->takes(times_->sample())) sample.flags |= kSampleIsSync;
    if (dependency_ != dependencyEnd_) sample.flags |= std::uint32_t{*dependency_} << 8;
    sample.fileOffset = fileOffset_;
    sample.description = track_.descriptionAt(chunks_->descriptionIndex());
    sample.track = handle_;
    step();
    return sample;
}

void TrackIterator::step() {
    fileOffset_ += sizes_->size();
    times_->next();
    sizes_->next();
    if (dependency_ != dependencyEnd_) ++dependency_;
    compositions_->next();
    chunks_->next();
    if (chunks_->chunk() == chunk_) return;
    chunk_ = chunks_->chunk();
    chunkOffsets_->next();
    // With fewer offsets than chunks the running offset goes on.
    if (chunkOffsets_->isValid()) fileOffset_ = chunkOffsets_->offset();
}

}  // namespace qlix::kzm::impl
