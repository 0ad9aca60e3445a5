#include "kzm/impl/ElstBox.h"

#include <algorithm>
#include <limits>

namespace qlix::kzm::impl {
namespace {

constexpr std::uint64_t kFixedSize = kFullBoxHeaderSize + 4;
constexpr std::uint64_t kRowSize = 20;
constexpr std::uint64_t kShortRowSize = 12;

}  // namespace

ElstBox::ElstBox(const BoxContext& context, std::uint32_t maxEdits)
    : FullBox(context, fourCc("elst"), 1, 0), capacity_(std::uint64_t{maxEdits} * 2 + 1) {
    setFixedSize(kFixedSize);
    grow(kRowSize * capacity_);
}

ElstBox::ElstBox(const BoxContext& context, const BoxHeader& header) : FullBox(context, header) {
    const std::uint64_t body = header.end - header.start - header.headerSize() - 4;
    if (body % 4 != 0) stream().warn(ErrorCode::warnTruncated);
    capacity_ = body / (version() == 1 ? kRowSize : kShortRowSize);
}

void ElstBox::putRows(FieldWriter& out) const {
    out.u32(static_cast<std::uint32_t>(edits_.size()));
    for (const Edit& edit : edits_) {
        out.u64(edit.duration);
        out.u64(static_cast<std::uint64_t>(edit.mediaTime));
        out.u16(static_cast<std::uint16_t>(edit.rateInteger));
        out.u16(static_cast<std::uint16_t>(edit.rateFraction));
    }
}

void ElstBox::writeFields() {
    // On purpose: the whole room is cleared. Pinned by ElstBoxTest.FillsItsRoomWithZeros.
    FieldWriter out;
    putRows(out);
    out.zeros(static_cast<std::size_t>(ownSize() - kFullBoxHeaderSize) - out.size());
    put(out);
}

void ElstBox::updateFields() {
    FieldWriter out;
    putRows(out);
    putAt(kFullBoxHeaderSize, out);
}

void ElstBox::readFields() {
    const bool wide = version() == 1;
    FieldReader in = fields();
    const std::uint32_t count = in.u32();
    if (count > kSanityLimit) raise(ErrorCode::countTooLarge);
    if (count > in.left() / (wide ? kRowSize : kShortRowSize)) raise(ErrorCode::boxTooShort);

    edits_.clear();
    edits_.reserve(count);
    std::uint64_t start = 0;
    for (std::uint32_t i = 0; i < count; ++i) {
        Edit edit;
        edit.duration = in.word(wide);
        edit.mediaTime = wide ? static_cast<std::int64_t>(in.u64())
                              : std::int64_t{static_cast<std::int32_t>(in.u32())};
        edit.rateInteger = static_cast<std::int16_t>(in.u16());
        edit.rateFraction = static_cast<std::int16_t>(in.u16());
        edit.presentationStart = start;
        start = edit.presentationEnd();
        edits_.push_back(edit);
    }
}

std::size_t ElstBox::emptyEditCount() const {
    return static_cast<std::size_t>(std::count_if(edits_.begin(), edits_.end(),
                                                  [](const Edit& edit) { return edit.isEmpty(); }));
}

void ElstBox::addEdit(std::uint64_t duration, std::int64_t mediaTime) {
    if (edits_.size() >= capacity_) raise(ErrorCode::editListFull);
    Edit edit;
    edit.duration = duration;
    edit.mediaTime = mediaTime;
    edits_.push_back(edit);
}

}  // namespace qlix::kzm::impl
