#include "kzm/impl/StsdBox.h"

#include <algorithm>
#include <utility>

#include "kzm/impl/KZMAudioSampleEntry.h"
#include "kzm/impl/KZMRtmpSampleEntry.h"
#include "kzm/impl/KZMVideoSampleEntry.h"

namespace qlix::kzm::impl {
namespace {

constexpr std::uint64_t kFixedSize = kFullBoxHeaderSize + 4;

/// Bytes set aside for the fields of one entry, beside its codec data. On purpose: 16 also for
/// hint tracks, whose entries have 6 more. Pinned by StsdBoxTest.SetsRoomAsideByHandler.
std::uint64_t entryFieldsSize(std::uint32_t handler) {
    switch (handler) {
        case fourCc("soun"):
            return 36;
        case fourCc("vide"):
            return 86;
        default:
            return 16;
    }
}

/// On purpose: all spellings of one coding are stored under its one code.
/// Pinned by StsdBoxTest.StoresEverySpellingOfAvcAsAvc1.
std::uint32_t storedFormat(std::uint32_t handler, std::uint32_t format) {
    const bool isAvc = format == fourCc("H264") || format == fourCc("h264");
    return handler == fourCc("vide") && isAvc ? fourCc("avc1") : format;
}

BoxPtrOf<KZMSampleEntry> entryOf(const BoxContext& context, const SampleDescriptor& descriptor) {
    if (const auto* video = dynamic_cast<const VideoSampleDescriptor*>(&descriptor)) {
        return makeBox<KZMVideoSampleEntry>(context, *video);
    }
    if (const auto* audio = dynamic_cast<const AudioSampleDescriptor*>(&descriptor)) {
        return makeBox<KZMAudioSampleEntry>(context, *audio);
    }
    if (const auto* rtmp = dynamic_cast<const RtmpSampleDescriptor*>(&descriptor)) {
        return makeBox<KZMRtmpSampleEntry>(context, *rtmp);
    }
    return makeBox<KZMSampleEntry>(context, descriptor);
}

}  // namespace

StsdBox::StsdBox(const BoxContext& context, const TrackSettings& settings)
    : VariableSizeBox(context, fourCc("stsd"), 0, 0), handler_(settings.handler) {
    setFixedSize(kFixedSize);
    const std::uint64_t reserved =
        (settings.descriptionSpace + entryFieldsSize(settings.handler)) * settings.descriptionSlots;
    if (reserved == 0) return;
    auto filler = makeBox<SkipBox>(context, reserved);
    filler_ = filler.get();
    addChild(std::move(filler));
}

StsdBox::StsdBox(const BoxContext& context, const BoxHeader& header)
    : VariableSizeBox(context, header) {}

void StsdBox::writeFields() {
    FieldWriter out;
    out.u32(entryCount_);
    put(out);
    if (leftover_ > 0) {
        FieldWriter zeros;
        zeros.zeros(static_cast<std::size_t>(leftover_));
        putAt(size() - leftover_, zeros);
    }
    countInFile_ = entryCount_;
}

void StsdBox::updateFields() {
    if (countInFile_ == entryCount_) return;
    FieldWriter out;
    out.u32(entryCount_);
    putAt(kFullBoxHeaderSize, out);
    countInFile_ = entryCount_;
}

std::uint32_t StsdBox::addDescription(const SampleDescriptor& descriptor) {
    const bool hasRtmp =
        std::any_of(entries_.begin(), entries_.end(),
                    [](const KZMSampleEntry* entry) { return entry->type() == fourCc("rtmp"); });
    if (descriptor.format == fourCc("rtmp") && hasRtmp) raise(ErrorCode::secondRtmpDescription);

    const auto copy = descriptor.copyOut();
    copy->format = storedFormat(handler_, descriptor.format);
    BoxPtrOf<KZMSampleEntry> entry = entryOf(context(), *copy);
    entry->setPlace(entryCount_ + 1, handler_);

    const std::uint64_t length = entry->size();
    if (filler_ == nullptr || length > filler_->size()) raise(ErrorCode::descriptionTooLarge);
    entry->setPosition(filler_->position());
    entries_.push_back(entry.get());
    insertChild(childCount() - 1, std::move(entry));
    makeRoom(length);
    return ++entryCount_;
}

/// Takes `count` bytes from the front of the filler, which goes when what is left can't be a box.
void StsdBox::makeRoom(std::uint64_t count) {
    const std::uint64_t left = filler_->size() - count;
    if (left >= kBoxHeaderSize) {
        filler_->dropFront(count);
        return;
    }
    leftover_ = left;
    filler_ = nullptr;
    takeChild(childCount() - 1);
}

void StsdBox::readFields() {
    FieldReader in = fields();
    entryCount_ = in.u32();
    if (entryCount_ > kSanityLimit) raise(ErrorCode::tableTooLarge);
    // The children begin behind the count; those of an earlier reading go.
    while (childCount() > 0) takeChild(childCount() - 1);
    entries_.clear();
    setFixedSize(kFixedSize);
    if (handler_ != 0) readEntries(in);
}

void StsdBox::readEntries(FieldReader& in) {
    // On purpose: 'skip' and 'free' count here, but indices go by the entries made.
    // Pinned by StsdBoxTest.StepsOverFreeBoxesBetweenTheEntries.
    for (std::uint32_t i = 0; i < entryCount_ && in.left() >= kBoxHeaderSize; ++i) {
        const std::optional<BoxHeader> found = readBoxHeader(stream(), nullptr);
        if (!found || found->end > header().end) break;
        if (found->type != fourCc("skip") && found->type != fourCc("free")) {
            BoxPtrOf<KZMSampleEntry> entry = makeEntry(*found);
            entry->setPlace(static_cast<std::uint32_t>(entries_.size() + 1), handler_);
            entries_.push_back(entry.get());
            addChild(std::move(entry));
        }
        stream().seek(found->end);
    }
    stream().seek(header().end);
    if (entries_.size() != entryCount_) {
        stream().warn(ErrorCode::warnDescriptionCount);
        entryCount_ = static_cast<std::uint32_t>(entries_.size());
    }
}

BoxPtrOf<KZMSampleEntry> StsdBox::makeEntry(const BoxHeader& found) const {
    switch (handler_) {
        case fourCc("hint"):
            return makeBox<KZMRtmpSampleEntry>(context(), found);
        case fourCc("soun"):
            return makeBox<KZMAudioSampleEntry>(context(), found);
        case fourCc("vide"):
            return makeBox<KZMVideoSampleEntry>(context(), found);
        default:
            return makeBox<KZMSampleEntry>(context(), found);
    }
}

const SampleDescriptor* StsdBox::description(std::uint32_t index) const {
    if (index == 0 || index > entries_.size()) return nullptr;
    return &entries_[index - 1]->descriptor();
}

std::size_t StsdBox::largestDataSize() const {
    std::size_t largest = 0;
    for (const KZMSampleEntry* entry : entries_) {
        largest = std::max(largest, entry->descriptor().data.size());
    }
    return largest;
}

}  // namespace qlix::kzm::impl
