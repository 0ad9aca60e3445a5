#include "kzm/impl/UuidBox.h"

namespace qlix::kzm::impl {

UuidBox::UuidBox(const BoxContext& context, const ExtendedType& type, const std::uint8_t* body,
                 std::size_t bodySize)
    : Box(context, fourCc("uuid")), body_(HeapOf<std::uint8_t>(context.allocator)) {
    setExtendedType(type);
    body_.assign(body, body + bodySize);
    resetSize();
    grow(bodySize);
}

UuidBox::UuidBox(const BoxContext& context, const BoxHeader& header)
    : Box(context, header), body_(HeapOf<std::uint8_t>(context.allocator)) {}

void UuidBox::writeHeader() {
    Box::writeHeader();
    FieldWriter out;
    out.bytes(header().extendedType->data(), header().extendedType->size());
    put(out);
}

void UuidBox::writeFields() {
    if (!body_.empty()) stream().write(body_.data(), body_.size());
}

void UuidBox::readFields() {
    FieldReader in = fields();
    const std::vector<std::uint8_t> bytes = in.bytes(in.left());
    body_.assign(bytes.begin(), bytes.end());
}

}  // namespace qlix::kzm::impl
