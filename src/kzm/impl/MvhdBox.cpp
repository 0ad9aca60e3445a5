#include "kzm/impl/MvhdBox.h"

#include "kzm/impl/HeaderFields.h"

namespace qlix::kzm::impl {
namespace {

constexpr std::uint64_t kSize = kFullBoxHeaderSize + 108;
constexpr std::uint64_t kShortSize = kFullBoxHeaderSize + 96;
constexpr std::uint64_t kDurationOffset = 32;

}  // namespace

MvhdBox::MvhdBox(const BoxContext& context, const MovieHeader& fields)
    : FullBox(context, fourCc("mvhd"), 1, 0), movie_(fields) {
    setFixedSize(kSize);
}

MvhdBox::MvhdBox(const BoxContext& context, const BoxHeader& header) : FullBox(context, header) {
    setFixedSize(version() != 0 ? kSize : kShortSize);
}

void MvhdBox::writeFields() {
    FieldWriter out;
    out.u64(secondsOf(movie_.creationDate));
    out.u64(secondsOf(movie_.modificationDate));
    out.u32(movie_.timescale);
    putFromDuration(out);
    put(out);
}

void MvhdBox::putFromDuration(FieldWriter& out) const {
    out.u64(movie_.duration);
    out.fixed16(movie_.rate);
    out.fixed8(movie_.volume);
    out.zeros(10);
    putUnityMatrix(out);
    out.zeros(24);
    out.u32(movie_.nextTrackId);
}

void MvhdBox::updateFields() {
    // What stands between the two fields that change goes along: one write instead of two.
    FieldWriter out;
    putFromDuration(out);
    putAt(kDurationOffset, out);
}

void MvhdBox::readFields() {
    // On purpose: versions above 1 are read as version 1.
    // Pinned by MvhdBoxTest.ReadsVersionTwoAsVersionOne.
    const bool wide = version() != 0;
    FieldReader in = fields();
    in.need((wide ? kSize : kShortSize) - kFullBoxHeaderSize);
    movie_.creationDate = dateOf(in.word(wide));
    movie_.modificationDate = dateOf(in.word(wide));
    movie_.timescale = in.u32();
    movie_.duration = in.word(wide);
    movie_.rate = fromFixed16(in.u32());
    movie_.volume = fromFixed8(in.u16());
    in.skip(10 + kMatrixSize + 24);
    movie_.nextTrackId = in.u32();
}

}  // namespace qlix::kzm::impl
