#pragma once

#include "kzm/impl/FullBox.h"

namespace qlix::kzm::impl {

/// Duration of a fragmented movie, in ticks of the movie. Version 1 is written; in any other the
/// duration has 4 bytes.
///
///   offset  size  field              written
///        0    12  full box header    size 20, 'mehd', version 1, flags 0
///       12     8  duration
class MehdBox final : public FullBox {
public:
    static constexpr std::uint64_t kSize = kFullBoxHeaderSize + 8;

    MehdBox(const BoxContext& context, std::uint64_t duration);
    MehdBox(const BoxContext& context, const BoxHeader& header);

    void readFields() override;
    void writeFields() override;
    /// Rewrites the duration.
    void updateFields() override;

    std::uint64_t duration() const { return duration_; }
    void setDuration(std::uint64_t duration) { duration_ = duration; }

private:
    std::uint64_t duration_ = 0;
};

}  // namespace qlix::kzm::impl
