#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace qlix::kzm {

/// What a decoder of AVC must know before the first sample.
struct AVCDecoderConfig {
    using ParameterSet = std::vector<std::uint8_t>;

    std::uint8_t profile = 0;
    std::uint8_t compatibility = 0;
    std::uint8_t level = 0;
    std::uint8_t nalLengthSize = 0;  ///< bytes of the length in front of a NAL unit: 1 to 4
    std::vector<ParameterSet> sequenceParameterSets;
    std::vector<ParameterSet> pictureParameterSets;

    /// Finds the `avcC` box in codec data and reads it.
    ///
    /// Throws Exception: codecDataTooShort for fewer than 4 bytes or sets that leave the block,
    /// noDecoderConfig without the box, decoderConfigTooLarge for a box that claims more bytes
    /// than there are.
    static AVCDecoderConfig parse(const std::uint8_t* data, std::size_t size);
};

}  // namespace qlix::kzm
