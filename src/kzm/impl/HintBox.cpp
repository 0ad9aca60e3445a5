#include "kzm/impl/HintBox.h"

#include <algorithm>

namespace qlix::kzm::impl {
namespace {

constexpr std::uint64_t kIdSize = 4;

}  // namespace

HintBox::HintBox(const BoxContext& context, const std::vector<std::uint32_t>& trackIds)
    : Box(context, fourCc("hint")),
      trackIds_(trackIds.begin(), trackIds.end(), HeapOf<std::uint32_t>(context.allocator)) {
    grow(kIdSize * trackIds.size());
}

HintBox::HintBox(const BoxContext& context, const BoxHeader& header)
    : Box(context, header), trackIds_(HeapOf<std::uint32_t>(context.allocator)) {
    if (fieldsSize() % kIdSize != 0) stream().warn(ErrorCode::warnTruncated);
}

void HintBox::writeFields() {
    FieldWriter out;
    for (const std::uint32_t id : trackIds_) out.u32(id);
    put(out);
}

void HintBox::readFields() {
    FieldReader in = fields();
    trackIds_.clear();
    while (in.left() >= kIdSize) trackIds_.push_back(in.u32());
}

bool HintBox::refersTo(std::uint32_t trackId) const {
    return std::find(trackIds_.begin(), trackIds_.end(), trackId) != trackIds_.end();
}

}  // namespace qlix::kzm::impl
