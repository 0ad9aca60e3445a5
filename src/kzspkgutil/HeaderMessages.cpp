#include "kzspkgutil/HeaderMessages.h"

#include <algorithm>
#include <initializer_list>
#include <utility>

namespace torvo::kzspkgutil {
namespace {

constexpr std::uint32_t kBoxHeaderSize = 8;

TCMessage makeHeader(IMemoryArena& arena, std::uint8_t tagType,
                     std::initializer_list<std::uint8_t> codecHeader, ByteView payload,
                     const Timestamp& sampleTime, const Timestamp& messageTime) {
    BlockPtr block = allocateTag(arena, codecHeader.size() + payload.size);
    const auto payloadSize = static_cast<std::uint32_t>(payload.size);
    const auto bodySize = static_cast<std::uint32_t>(codecHeader.size()) + payloadSize;

    std::uint8_t* const tag = block->data();
    tag[0] = tagType;
    std::uint8_t* const sample =
        std::copy(codecHeader.begin(), codecHeader.end(), tag + kTagHeaderSize);
    std::copy_n(payload.data, payload.size, sample);
    storeTagSizes(tag, bodySize);
    return TCMessage(sampleTime, messageTime, bodySize + kTagOverhead, std::move(block), sample,
                     payloadSize);
}

}  // namespace

TCMessage makeAvcHeader(IMemoryArena& arena, ByteView avcC, const Timestamp& sampleTime,
                        const Timestamp& messageTime) {
    if (avcC.size < kBoxHeaderSize) return {};
    // On purpose: the contents of the box alone, behind four zeros for packet type and offset.
    // Pinned by HeaderMessageTest.WrapsTheContentsOfTheAvcBox.
    const ByteView contents = {avcC.data + kBoxHeaderSize, avcC.size - kBoxHeaderSize};
    return makeHeader(arena, kVideoTag, {0x17, 0, 0, 0, 0}, contents, sampleTime, messageTime);
}

TCMessage makeAacHeader(IMemoryArena& arena, ByteView config, const Timestamp& sampleTime,
                        const Timestamp& messageTime) {
    if (config.size == 0) return {};
    return makeHeader(arena, kAudioTag, {0xAF, 0}, config, sampleTime, messageTime);
}

}  // namespace torvo::kzspkgutil
