#include "kzspkgutil/HintDescription.h"

#include <array>
#include <cstddef>

#include "kzs/base/ByteOrder.h"

namespace torvo::kzspkgutil {
namespace {

/// One entry of an `amhp` box. The five flags go into bits 7 to 3 of one byte. On purpose no entry
/// ever has other values than these. Pinned by HintDescriptionTest.IsOneEntryOfTheValue4.
struct HintEntry {
    std::uint8_t id = 1;
    std::array<bool, 5> flags = {};
    std::uint8_t value = 4;
};

constexpr std::size_t kAmhpHeaderSize = 13;
constexpr std::size_t kEntrySize = 3;
constexpr std::size_t kAmtoSize = 12;

std::uint8_t flagBits(const HintEntry& entry) {
    unsigned bits = 0;
    for (std::size_t i = 0; i < entry.flags.size(); ++i) {
        if (entry.flags[i]) bits |= 0x80U >> i;
    }
    return static_cast<std::uint8_t>(bits);
}

}  // namespace

Blob makeHintDescriptionData(std::optional<std::uint32_t> timeOrigin) {
    const std::array<HintEntry, 1> entries;
    const std::size_t amhpSize = kAmhpHeaderSize + kEntrySize * entries.size();
    Blob data(amhpSize + (timeOrigin ? kAmtoSize : 0));

    kzs::storeU32(&data[0], kzs::low32(amhpSize));
    kzs::storeU32(&data[4], kzs::fourCc("amhp"));
    kzs::storeU32(&data[8], 0);
    data[12] = static_cast<std::uint8_t>(entries.size());
    std::size_t position = kAmhpHeaderSize;
    for (const HintEntry& entry : entries) {
        data[position++] = entry.id;
        data[position++] = flagBits(entry);
        data[position++] = entry.value;
    }
    if (timeOrigin) {
        kzs::storeU32(&data[amhpSize], kAmtoSize);
        kzs::storeU32(&data[amhpSize + 4], kzs::fourCc("amto"));
        kzs::storeU32(&data[amhpSize + 8], *timeOrigin);
    }
    return data;
}

}  // namespace torvo::kzspkgutil
