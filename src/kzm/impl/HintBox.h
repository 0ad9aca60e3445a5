#pragma once

#include <vector>

#include "kzm/impl/Box.h"

namespace qlix::kzm::impl {

/// The tracks that a hint track refers to.
///
///   offset  size  field
///        0     8  box header: 'hint'
///        8   4 n  track ids
class HintBox final : public Box {
public:
    HintBox(const BoxContext& context, const std::vector<std::uint32_t>& trackIds);
    /// A body that isn't a multiple of 4 bytes gives warnTruncated.
    HintBox(const BoxContext& context, const BoxHeader& header);

    void writeFields() override;
    void readFields() override;

    const BoxVector<std::uint32_t>& trackIds() const { return trackIds_; }
    bool refersTo(std::uint32_t trackId) const;

private:
    BoxVector<std::uint32_t> trackIds_;
};

}  // namespace qlix::kzm::impl
