#pragma once

#include "kzm/impl/FullBox.h"

namespace qlix::kzm::impl {

/// Track fragment header.
///
///   offset  size  field
///        0    12  full box header: 'tfhd', version 0, flags tell what follows the track id
///       12     4  track id
///       ..     8  base data offset            (flag 0x01)
///       ..     4  sample description index    (flag 0x02)
///       ..     4  default sample duration     (flag 0x08), written as 1
///       ..     4  default sample size         (flag 0x10), written as 1
///       ..     4  default sample flags        (flag 0x20), written as 1
///
/// The library's own fragments have flags 3, which makes 28 bytes with the base data offset at 16.
/// On purpose the three defaults are written as 1 whatever they hold: no fragment of ours has
/// them. Pinned by TfhdBoxTest.WritesTheDefaultsAsOne.
class TfhdBox final : public FullBox {
public:
    static constexpr std::uint32_t kBaseDataOffsetPresent = 0x01;
    static constexpr std::uint32_t kDescriptionIndexPresent = 0x02;
    static constexpr std::uint32_t kDefaultDurationPresent = 0x08;
    static constexpr std::uint32_t kDefaultSizePresent = 0x10;
    static constexpr std::uint32_t kDefaultFlagsPresent = 0x20;
    static constexpr std::uint32_t kDefaultBaseIsMoof = 0x020000;
    static constexpr std::uint32_t kWrittenFlags =
        kBaseDataOffsetPresent | kDescriptionIndexPresent;
    /// In a description index, duration, size or flags field: neither the box nor, so far, the
    /// track's `trex` gave a value.
    static constexpr std::uint32_t kAbsent = 0xFFFFFFFF;

    TfhdBox(const BoxContext& context, std::uint32_t trackId, std::uint64_t baseDataOffset,
            std::uint32_t descriptionIndex, std::uint32_t flags = kWrittenFlags);
    TfhdBox(const BoxContext& context, const BoxHeader& header);

    void readFields() override;
    void writeFields() override;
    /// Rewrites the base data offset.
    void updateFields() override;

    std::uint32_t trackId() const { return trackId_; }
    std::uint64_t baseDataOffset() const { return baseDataOffset_; }
    void setBaseDataOffset(std::uint64_t offset) { baseDataOffset_ = offset; }
    std::uint32_t descriptionIndex() const { return descriptionIndex_; }
    void setDescriptionIndex(std::uint32_t index) { descriptionIndex_ = index; }
    std::uint32_t defaultDuration() const { return defaultDuration_; }
    std::uint32_t defaultSize() const { return defaultSize_; }
    std::uint32_t defaultFlags() const { return defaultFlags_; }
    bool has(std::uint32_t flag) const { return (flags() & flag) != 0; }

    /// Gives each of the four values that is still absent the one of the track's `trex`.
    void fillIn(std::uint32_t descriptionIndex, std::uint32_t duration, std::uint32_t size,
                std::uint32_t sampleFlags);

private:
    std::uint32_t trackId_ = 0;
    std::uint64_t baseDataOffset_ = 0;
    std::uint32_t descriptionIndex_ = kAbsent;
    std::uint32_t defaultDuration_ = kAbsent;
    std::uint32_t defaultSize_ = kAbsent;
    std::uint32_t defaultFlags_ = kAbsent;
};

}  // namespace qlix::kzm::impl
