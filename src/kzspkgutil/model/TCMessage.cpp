#include "kzspkgutil/model/TCMessage.h"

#include <string>
#include <utility>

#include "kzs/base/ByteOrder.h"
#include "kzspkgutil/model/KZSPkgUtilException.h"

namespace torvo::kzspkgutil {

TCMessage::TCMessage(const Timestamp& sampleTime, const Timestamp& messageTime,
                     std::uint32_t tagSize, BlockPtr block, std::uint8_t* sampleData,
                     std::uint32_t sampleDataSize)
    : Message(messageTime),
      sampleTime_(sampleTime),
      tagSize_(tagSize),
      block_(std::move(block)),
      sampleData_(sampleData),
      sampleDataSize_(sampleDataSize) {
    storeTagTime(block_->data(), messageTime.value);
}

TCMessage TCMessage::takeImage() {
    TCMessage taken = std::move(*this);
    sampleData_ = nullptr;
    sampleDataSize_ = 0;
    return taken;
}

BlockPtr allocateTag(IMemoryArena& arena, std::uint64_t bodySize) {
    if (bodySize > kLargestTagBody) {
        throw KZSPkgUtilException(kTagTooLarge, "a body of " + std::to_string(bodySize) +
                                                    " bytes is too large for an FLV tag");
    }
    return arena.allocate(bodySize + kTagOverhead);
}

void storeTagTime(std::uint8_t* tag, std::uint64_t milliseconds) {
    kzs::storeU24(tag + 4, kzs::low32(milliseconds));
    tag[7] = static_cast<std::uint8_t>(milliseconds >> 24);
}

void storeTagSizes(std::uint8_t* tag, std::uint32_t bodySize) {
    kzs::storeU24(tag + 1, bodySize);
    kzs::storeU24(tag + 8, 0);
    // On purpose: the size word that follows a tag in a file stays in its image.
    // Pinned by TagSizesTest.StandAroundTheBody.
    kzs::storeU32(tag + kTagHeaderSize + bodySize, bodySize + kTagHeaderSize);
}

}  // namespace torvo::kzspkgutil
