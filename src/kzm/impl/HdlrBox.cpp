#include "kzm/impl/HdlrBox.h"

namespace qlix::kzm::impl {
namespace {

constexpr std::uint64_t kSize = kFullBoxHeaderSize + 20;

}  // namespace

HdlrBox::HdlrBox(const BoxContext& context, std::uint32_t handler, std::string_view name)
    : FullBox(context, fourCc("hdlr"), 0, 0),
      handler_(handler),
      name_(name.begin(), name.end(), HeapOf<char>(context.allocator)) {
    setFixedSize(kSize);
    grow(name.size());
}

HdlrBox::HdlrBox(const BoxContext& context, const BoxHeader& header)
    : FullBox(context, header), name_(HeapOf<char>(context.allocator)) {}

void HdlrBox::writeFields() {
    FieldWriter out;
    out.zeros(4);
    out.u32(handler_);
    out.zeros(12);
    // On purpose: no terminator is added; the length that the caller gives has it.
    // Pinned by HdlrBoxTest.WritesTheNameAsGiven.
    out.text(name());
    put(out);
}

void HdlrBox::readFields() {
    FieldReader in = fields();
    in.need(kSize - kFullBoxHeaderSize);
    in.skip(4);
    handler_ = in.u32();
    in.skip(12);
    if (in.left() > kSanityLimit) raise(ErrorCode::countTooLarge);
    const std::vector<std::uint8_t> bytes = in.bytes(in.left());
    name_.assign(bytes.begin(), bytes.end());
    // On purpose: reading adds the terminator that writing doesn't.
    // Pinned by HdlrBoxTest.AddsATerminatorWhenReading.
    if (name_.empty() || name_.back() != 0) name_.push_back(0);
}

}  // namespace qlix::kzm::impl
