#include "kzm/impl/FtypBox.h"

namespace qlix::kzm::impl {
namespace {

constexpr std::uint64_t kBrandSize = 4;
constexpr std::uint64_t kMaxBrandBytes = 400000000;

}  // namespace

FtypBox::FtypBox(const BoxContext& context)
    : Box(context, fourCc("ftyp")), compatibleBrands_(HeapOf<std::uint32_t>(context.allocator)) {
    grow(4 + 4);
}

FtypBox::FtypBox(const BoxContext& context, const BoxHeader& header)
    : Box(context, header), compatibleBrands_(HeapOf<std::uint32_t>(context.allocator)) {}

void FtypBox::addCompatibleBrand(std::uint32_t brand) {
    compatibleBrands_.push_back(brand);
    grow(kBrandSize);
}

void FtypBox::writeFields() {
    FieldWriter out;
    out.u32(majorBrand_);
    out.u32(minorVersion_);
    for (const std::uint32_t brand : compatibleBrands_) out.u32(brand);
    put(out);
}

void FtypBox::readFields() {
    FieldReader in = fields();
    majorBrand_ = in.u32();
    minorVersion_ = in.u32();
    compatibleBrands_.clear();

    const std::uint64_t left = in.left();
    if (left > kMaxBrandBytes) raise(ErrorCode::boxTooShort);
    if (left % kBrandSize != 0) {
        stream().warn(ErrorCode::warnTruncated);
        return;
    }
    for (std::uint64_t i = 0; i < left / kBrandSize; ++i) compatibleBrands_.push_back(in.u32());
}

}  // namespace qlix::kzm::impl
