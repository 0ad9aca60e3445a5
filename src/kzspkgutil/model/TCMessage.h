#pragma once

#include <cstdint>

#include "kzspkgutil/model/MemoryArena.h"
#include "kzspkgutil/model/Message.h"

namespace torvo::kzspkgutil {

constexpr std::uint32_t kTagHeaderSize = 11;
constexpr std::uint32_t kPreviousTagSizeSize = 4;
/// The bytes of a tag image around its body.
constexpr std::uint32_t kTagOverhead = kTagHeaderSize + kPreviousTagSizeSize;
/// The largest body that the 24-bit size of a tag can tell.
constexpr std::uint32_t kLargestTagBody = 0xFFFFFF;

constexpr std::uint8_t kAudioTag = 8;
constexpr std::uint8_t kVideoTag = 9;
constexpr std::uint8_t kAmf3DataTag = 15;
constexpr std::uint8_t kAmf0DataTag = 18;
constexpr std::uint8_t kEncryptedTagBit = 0x20;
/// Takes the encryption bit and bit 7 off a tag type.
constexpr std::uint8_t kTagTypeMask = 0x5F;

/// A tag image in a shared block, of which it is the beginning.
///
/// Copies are shallow: they share the block and the sample pointer. A default-constructed message
/// stands for the absence of one: getTagSize() is 0.
class TCMessage final : public Message {
public:
    TCMessage() = default;
    /// From prepared parts: `block` holds a tag image of `tagSize` bytes whose sample proper lies
    /// at `sampleData`. Writes the message time into bytes 4 to 7 of the tag. Shares the block.
    TCMessage(const Timestamp& sampleTime, const Timestamp& messageTime, std::uint32_t tagSize,
              BlockPtr block, std::uint8_t* sampleData, std::uint32_t sampleDataSize);

    Timestamp getSampleTime() const override { return sampleTime_; }
    const std::uint8_t* getTag() const override { return block_ ? block_->data() : nullptr; }
    const std::uint8_t* getTagBody() const override {
        return block_ ? block_->data() + kTagHeaderSize : nullptr;
    }
    /// 64-bit arithmetic: of the absent message it is no size at all, so test getTagSize first.
    std::uint64_t getTagBodySize() const override { return std::uint64_t{tagSize_} - kTagOverhead; }
    const std::uint8_t* getSampleData() const override { return sampleData_; }
    std::uint32_t getSampleDataOffset() const override {
        return static_cast<std::uint32_t>(sampleData_ - getTag());
    }
    std::uint32_t getSampleDataSize() const override { return sampleDataSize_; }

    /// The whole image: 11 + body + 4 bytes.
    std::uint32_t getTagSize() const { return tagSize_; }
    const BlockPtr& getBlock() const { return block_; }

    /// Moves the image into the message that is returned. This one keeps its times and the tag's
    /// size, and has no bytes any more.
    TCMessage takeImage();

private:
    Timestamp sampleTime_;
    std::uint32_t tagSize_ = 0;
    BlockPtr block_;
    std::uint8_t* sampleData_ = nullptr;
    std::uint32_t sampleDataSize_ = 0;
};

/// A block for a tag image whose body has `bodySize` bytes, its contents undefined.
///
/// Throws KZSPkgUtilException, kTagTooLarge, when the body's size doesn't fit the 24 bits that a
/// tag has for it, and std::bad_alloc.
BlockPtr allocateTag(IMemoryArena& arena, std::uint64_t bodySize);

/// Writes a time in milliseconds into bytes 4 to 7 of a tag: bits 16-23, 8-15, 0-7, 24-31.
void storeTagTime(std::uint8_t* tag, std::uint64_t milliseconds);

/// Writes the body size into bytes 1 to 3, zero into 8 to 10, and bodySize + 11 behind the body.
void storeTagSizes(std::uint8_t* tag, std::uint32_t bodySize);

}  // namespace torvo::kzspkgutil
