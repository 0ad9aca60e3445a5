#pragma once

#include "kzm/impl/FullBox.h"

namespace qlix::kzm::impl {

/// Defaults of a track for its fragments.
///
///   offset  size  field                        written
///        0    12  full box header              size 32, 'trex', version 0, flags 0
///       12     4  track id
///       16     4  default description index    1
///       20     4  default sample duration      1
///       24     4  default sample size          1
///       28     4  default sample flags         1
///
/// On purpose the last four are written as 1 whatever the fields hold: the fragments of this
/// library carry all of them in every row. Pinned by TrexBoxTest.WritesOnesForTheDefaults.
class TrexBox final : public FullBox {
public:
    static constexpr std::uint64_t kSize = kFullBoxHeaderSize + 20;

    TrexBox(const BoxContext& context, std::uint32_t trackId);
    TrexBox(const BoxContext& context, const BoxHeader& header);

    void readFields() override;
    void writeFields() override;

    std::uint32_t trackId() const { return trackId_; }
    std::uint32_t descriptionIndex() const { return descriptionIndex_; }
    std::uint32_t defaultDuration() const { return defaultDuration_; }
    std::uint32_t defaultSize() const { return defaultSize_; }
    std::uint32_t defaultFlags() const { return defaultFlags_; }

private:
    std::uint32_t trackId_ = 0;
    std::uint32_t descriptionIndex_ = 0;
    std::uint32_t defaultDuration_ = 0;
    std::uint32_t defaultSize_ = 0;
    std::uint32_t defaultFlags_ = 0;
};

}  // namespace qlix::kzm::impl
