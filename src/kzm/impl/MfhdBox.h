#pragma once

#include "kzm/impl/FullBox.h"

namespace qlix::kzm::impl {

/// Movie fragment header: numbers the fragments of one file.
///
///   offset  size  field
///        0    12  full box header: size 16, 'mfhd', version 0, flags 0
///       12     4  sequence number, from 1
class MfhdBox final : public FullBox {
public:
    static constexpr std::uint64_t kSize = kFullBoxHeaderSize + 4;

    MfhdBox(const BoxContext& context, std::uint32_t sequenceNumber);
    MfhdBox(const BoxContext& context, const BoxHeader& header);

    void readFields() override;
    void writeFields() override;

    std::uint32_t sequenceNumber() const { return sequenceNumber_; }

private:
    std::uint32_t sequenceNumber_ = 0;
};

}  // namespace qlix::kzm::impl
