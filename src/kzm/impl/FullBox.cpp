#include "kzm/impl/FullBox.h"

namespace qlix::kzm::impl {
namespace {

constexpr std::uint32_t kFlagsMask = 0xFFFFFF;

}  // namespace

FullBox::FullBox(const BoxContext& context, std::uint32_t type, std::uint8_t version,
                 std::uint32_t flags)
    : Box(context, type), version_(version), flags_(flags & kFlagsMask) {
    setFixedSize(kFullBoxHeaderSize);
}

FullBox::FullBox(const BoxContext& context, const BoxHeader& header) : Box(context, header) {
    // On purpose: read here for the classes whose size hangs on the version, and again with the
    // fields. Pinned by FullBoxTest.ReadsVersionAndFlagsWhenItIsMade.
    FullBox::readVersionAndFlags();
}

void FullBox::writeHeader() {
    Box::writeHeader();
    FieldWriter out;
    out.u8(version_);
    out.u24(flags_);
    put(out);
}

std::uint64_t FullBox::fieldsSize() const { return ownSize() - kFullBoxHeaderSize; }

void FullBox::readVersionAndFlags() {
    FieldReader in = fieldsFrom(header().headerSize());
    if (in.left() < 4) raise(ErrorCode::noVersionAndFlags);
    version_ = in.u8();
    flags_ = in.u24();
}

void FullBox::resetSize() { setFixedSize(kFullBoxHeaderSize); }

}  // namespace qlix::kzm::impl
