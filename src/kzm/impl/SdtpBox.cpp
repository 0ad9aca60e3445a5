#include "kzm/impl/SdtpBox.h"

namespace qlix::kzm::impl {

SdtpBox::SdtpBox(const BoxContext& context, std::uint32_t capacity)
    : FullBox(context, fourCc("sdtp"), 0, 0), bytes_(HeapOf<std::uint8_t>(context.allocator)) {
    grow(capacity);
}

SdtpBox::SdtpBox(const BoxContext& context, const BoxHeader& header)
    : FullBox(context, header), bytes_(HeapOf<std::uint8_t>(context.allocator)) {}

void SdtpBox::writeFields() {
    FieldWriter out;
    out.zeros(static_cast<std::size_t>(fieldsSize()));
    put(out);
}

void SdtpBox::putSample(std::uint32_t number, std::uint8_t dependency) {
    FieldWriter out;
    out.u8(dependency);
    putAt(kFullBoxHeaderSize + number - 1, out);
}

void SdtpBox::readFields() {
    if (sampleCount_ > kSanityLimit) raise(ErrorCode::tableTooLarge);
    FieldReader in = fields();
    const std::vector<std::uint8_t> bytes = in.bytes(sampleCount_);
    bytes_.assign(bytes.begin(), bytes.end());
}

}  // namespace qlix::kzm::impl
