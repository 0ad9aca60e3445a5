#include "kzm/impl/EntryBlock.h"

#include <algorithm>

#include "kzs/base/ByteOrder.h"

namespace qlix::kzm::impl {

template <std::size_t Size>
std::array<std::uint8_t, Size> EntryBlock::take() {
    std::array<std::uint8_t, Size> out{};
    std::copy_n(bytes_.data() + at_, std::min(Size, bytes_.size() - at_), out.data());
    skip(Size);
    return out;
}

std::uint16_t EntryBlock::u16() { return torvo::kzs::loadU16(take<2>().data()); }

std::uint32_t EntryBlock::u32() { return torvo::kzs::loadU32(take<4>().data()); }

void EntryBlock::skip(std::size_t count) { at_ += std::min(count, bytes_.size() - at_); }

std::vector<std::uint8_t> EntryBlock::rest() const {
    return {bytes_.begin() + static_cast<std::ptrdiff_t>(at_), bytes_.end()};
}

}  // namespace qlix::kzm::impl
