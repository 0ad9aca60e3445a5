#include "kzspkgutil/model/BoxSearch.h"

#include <algorithm>
#include <array>

#include "kzs/base/ByteOrder.h"

namespace torvo::kzspkgutil {
namespace {

constexpr std::size_t kBoxHeaderSize = 8;

}  // namespace

ByteView findBox(const Blob& blob, std::uint32_t type) {
    std::array<std::uint8_t, 4> letters{};
    kzs::storeU32(letters.data(), type);
    if (blob.size() < kBoxHeaderSize) return {};
    // A hit in the first four bytes has no room for the size word ahead of it.
    const auto hit = std::search(blob.begin() + 4, blob.end(), letters.begin(), letters.end());
    if (hit == blob.end()) return {};

    const auto start = static_cast<std::size_t>(hit - blob.begin()) - 4;
    const std::size_t size = kzs::loadU32(blob.data() + start);
    if (size < kBoxHeaderSize || size > blob.size() - start) return {};
    return {blob.data() + start, size};
}

}  // namespace torvo::kzspkgutil
