#pragma once

#include "kzm/impl/FullBox.h"

namespace qlix::kzm::impl {

/// Sample dependencies: one byte a sample. The count stands in `stsz`.
///
///   offset  size  field
///        0    12  full box header: 'sdtp', version 0, flags 0
///       12     n  dependency bytes
class SdtpBox final : public FullBox {
public:
    /// Room for `capacity` samples.
    SdtpBox(const BoxContext& context, std::uint32_t capacity);
    SdtpBox(const BoxContext& context, const BoxHeader& header);

    void writeFields() override;
    /// Reads as many bytes as `setSampleCount` told. Throws tableTooLarge for a count above
    /// kSanityLimit, boxTooShort for one beyond the box.
    void readFields() override;

    const BoxVector<std::uint8_t>& bytes() const { return bytes_; }
    void setSampleCount(std::uint32_t count) { sampleCount_ = count; }

    /// Writes the byte of a sample at once; its number counts from 1 and is within the room.
    void putSample(std::uint32_t number, std::uint8_t dependency);

private:
    std::uint32_t sampleCount_ = 0;
    BoxVector<std::uint8_t> bytes_;
};

}  // namespace qlix::kzm::impl
