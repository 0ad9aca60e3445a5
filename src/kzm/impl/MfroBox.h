#pragma once

#include "kzm/impl/FullBox.h"

namespace qlix::kzm::impl {

/// Last box of an `mfra`, for finding it from the end of the file.
///
///   offset  size  field
///        0    12  full box header: size 16, 'mfro', version 0, flags 0
///       12     4  size of the whole 'mfra'
class MfroBox final : public FullBox {
public:
    static constexpr std::uint64_t kSize = kFullBoxHeaderSize + 4;

    MfroBox(const BoxContext& context, std::uint32_t indexSize);

    void writeFields() override;

    void setIndexSize(std::uint32_t size) { indexSize_ = size; }

private:
    std::uint32_t indexSize_;
};

}  // namespace qlix::kzm::impl
