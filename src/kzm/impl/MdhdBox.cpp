#include "kzm/impl/MdhdBox.h"

namespace qlix::kzm::impl {
namespace {

constexpr std::uint64_t kSize = kFullBoxHeaderSize + 32;
constexpr std::uint64_t kShortSize = kFullBoxHeaderSize + 20;
constexpr std::uint64_t kDurationOffset = 32;
constexpr int kLetterBase = 0x60;
constexpr std::uint32_t kLetterMask = 0x1F;

/// Letters that are missing count as 0; others are cut to 5 bits.
std::uint16_t packed(const Language& language) {
    std::uint32_t out = 0;
    bool ended = false;
    for (std::size_t i = 0; i < 3; ++i) {
        const int letter = static_cast<unsigned char>(language[i]);
        ended = ended || letter == 0;
        const std::uint32_t bits =
            ended ? 0 : static_cast<std::uint32_t>(letter - kLetterBase) & kLetterMask;
        out = (out << 5) | bits;
    }
    return static_cast<std::uint16_t>(out);
}

Language unpacked(std::uint32_t bits) {
    Language out = {};
    for (std::size_t i = 0; i < 3; ++i) {
        out[i] = static_cast<char>(((bits >> (10 - 5 * i)) & kLetterMask) + kLetterBase);
    }
    return out;
}

}  // namespace

MdhdBox::MdhdBox(const BoxContext& context, const MediaHeader& fields)
    : FullBox(context, fourCc("mdhd"), 1, 0), media_(fields) {
    setFixedSize(kSize);
}

MdhdBox::MdhdBox(const BoxContext& context, const BoxHeader& header) : FullBox(context, header) {
    setFixedSize(version() != 0 ? kSize : kShortSize);
}

void MdhdBox::writeFields() {
    FieldWriter out;
    out.u64(secondsOf(media_.creationDate));
    out.u64(secondsOf(media_.modificationDate));
    out.u32(media_.timescale);
    out.u64(media_.duration);
    out.u16(packed(media_.language));
    out.u16(0);
    put(out);
}

void MdhdBox::updateFields() {
    FieldWriter out;
    out.u64(media_.duration);
    putAt(kDurationOffset, out);
}

void MdhdBox::readFields() {
    // On purpose: refused here, though a movie header of version 2 is read.
    // Pinned by MdhdBoxTest.RefusesVersionTwo.
    if (version() > 1) raise(ErrorCode::unsupportedVersion);
    const bool wide = version() != 0;
    FieldReader in = fields();
    in.need((wide ? kSize : kShortSize) - kFullBoxHeaderSize);
    media_.creationDate = dateOf(in.word(wide));
    media_.modificationDate = dateOf(in.word(wide));
    media_.timescale = in.u32();
    media_.duration = in.word(wide);
    media_.language = unpacked(in.u16());
}

}  // namespace qlix::kzm::impl
