#include "kzm/impl/StblBox.h"

#include <utility>

#include "kzm/WriterRecords.h"

namespace qlix::kzm::impl {

// On purpose: this order, always `co64` and never `stco`.
// Pinned by StblBoxTest.WritesItsTablesInOneOrder.
StblBox::StblBox(const BoxContext& context, const TrackSettings& settings)
    : Box(context, fourCc("stbl")), sampleCapacity_(settings.sampleTableCapacity) {
    const std::uint32_t capacity = settings.sampleTableCapacity;
    StblBox::addChild(makeBox<StsdBox>(context, settings));
    StblBox::addChild(makeBox<SttsBox>(context, capacity, settings.lastSampleDelta));
    StblBox::addChild(makeBox<StscBox>(context, capacity));
    StblBox::addChild(makeBox<StszBox>(context, capacity));
    StblBox::addChild(makeBox<Co64Box>(context, capacity));
    StblBox::addChild(makeBox<CttsBox>(context, capacity));
    StblBox::addChild(makeBox<StssBox>(context, capacity));
    if (settings.hasDependencyTable) StblBox::addChild(makeBox<SdtpBox>(context, capacity));
}

StblBox::StblBox(const BoxContext& context, const BoxHeader& header) : Box(context, header) {
    resetSize();
}

void StblBox::addChild(BoxPtr child) {
    Box* const added = child.get();
    Box::addChild(std::move(child));
    remember(stsd_, added);
    remember(stts_, added);
    remember(ctts_, added);
    remember(stsc_, added);
    remember(stsz_, added);
    remember(co64_, added);
    remember(stco_, added);
    remember(stss_, added);
    remember(sdtp_, added);
}

void StblBox::readChildren(RootBox* root, bool validate) {
    for (std::size_t i = 0; i < childCount(); ++i) {
        if (heldChild(i) != sdtp_) heldChild(i)->parse(root, validate);
    }
    if (sdtp_ == nullptr) return;
    sdtp_->setSampleCount(stsz_ != nullptr ? stsz_->sampleCount() : 0);
    sdtp_->parse(root, validate);
}

void StblBox::addSample(const TableSample& sample) {
    if (sampleCount_ >= sampleCapacity_) raise(ErrorCode::tableFull);
    ++sampleCount_;
    stts_->addSample(sample.decodeTime);
    ctts_->addSample(sample.compositionOffset);
    stsz_->addSample(sample.size);
    addToChunk(sample);
    if (isSyncSample(sample.kind)) stss_->addSample(sampleCount_);
    if (sdtp_ != nullptr) {
        sdtp_->putSample(sampleCount_, static_cast<std::uint8_t>(sample.kind >> 8));
    }
}

void StblBox::addToChunk(const TableSample& sample) {
    if (chunkDescription_ != sample.descriptionIndex || nextOffset_ != sample.offset) {
        closeChunk();
        chunkDescription_ = sample.descriptionIndex;
        chunkOffset_ = sample.offset;
        ++chunkNumber_;
    }
    ++chunkSamples_;
    nextOffset_ = sample.offset + sample.size;
}

void StblBox::closeChunk() {
    if (chunkDescription_ < 0) return;
    stsc_->addChunk(chunkNumber_, chunkSamples_, static_cast<std::uint32_t>(chunkDescription_));
    co64_->addChunk(chunkOffset_);
    chunkDescription_ = -1;
    chunkSamples_ = 0;
}

void StblBox::updateFields() { closeChunk(); }

}  // namespace qlix::kzm::impl
