#include "kzm/impl/TkhdBox.h"

#include "kzm/impl/HeaderFields.h"

namespace qlix::kzm::impl {
namespace {

constexpr std::uint64_t kSize = kFullBoxHeaderSize + 92;
constexpr std::uint64_t kShortSize = kFullBoxHeaderSize + 80;
constexpr std::uint64_t kDurationOffset = 36;

}  // namespace

TkhdBox::TkhdBox(const BoxContext& context, std::uint32_t flags, const TrackHeader& fields)
    : FullBox(context, fourCc("tkhd"), 1, flags), track_(fields) {
    setFixedSize(kSize);
}

TkhdBox::TkhdBox(const BoxContext& context, const BoxHeader& header) : FullBox(context, header) {
    setFixedSize(version() != 0 ? kSize : kShortSize);
}

void TkhdBox::writeFields() {
    FieldWriter out;
    out.u64(secondsOf(track_.creationDate));
    out.u64(secondsOf(track_.modificationDate));
    out.u32(track_.trackId);
    out.zeros(4);
    out.u64(track_.duration);
    out.zeros(8 + 2 + 2);
    out.fixed8(track_.volume);
    out.zeros(2);
    putUnityMatrix(out);
    out.fixed16(track_.width);
    out.fixed16(track_.height);
    put(out);
}

void TkhdBox::updateFields() {
    FieldWriter out;
    out.u64(track_.duration);
    putAt(kDurationOffset, out);
}

void TkhdBox::readFields() {
    const bool wide = version() != 0;
    FieldReader in = fields();
    in.need((wide ? kSize : kShortSize) - kFullBoxHeaderSize);
    track_.creationDate = dateOf(in.word(wide));
    track_.modificationDate = dateOf(in.word(wide));
    track_.trackId = in.u32();
    in.skip(4);
    track_.duration = in.word(wide);
    in.skip(8 + 2 + 2);
    track_.volume = fromFixed8(in.u16());
    in.skip(2 + kMatrixSize);
    track_.width = fromFixed16(in.u32());
    track_.height = fromFixed16(in.u32());
}

}  // namespace qlix::kzm::impl
