#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace torvo::kzs {

/// The bytes as base64 in the standard alphabet, padded, without line breaks.
std::string base64Encode(const std::vector<std::uint8_t>& bytes);

/// The bytes of a base64 text. `-` counts as `/`; `=` may only fill the last group.
///
/// Throws std::runtime_error for any other byte outside the alphabet, white space included, and
/// for a group of less than four characters.
std::vector<std::uint8_t> base64Decode(std::string_view text);

}  // namespace torvo::kzs
