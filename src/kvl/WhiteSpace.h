#pragma once

#include <string>
#include <string_view>

namespace kvl {

/// The six characters that count as white space in the "C" locale, whatever locale is set.
constexpr std::string_view kWhiteSpace = " \t\n\v\f\r";

/// Whether `text` has no other characters; true for an empty one.
inline bool isWhiteSpace(std::string_view text) {
    return text.find_first_not_of(kWhiteSpace) == std::string_view::npos;
}

/// `text` without the white space at its ends.
inline std::string trimmed(std::string_view text) {
    const std::size_t begin = text.find_first_not_of(kWhiteSpace);
    if (begin == std::string_view::npos) return {};
    const std::size_t end = text.find_last_not_of(kWhiteSpace) + 1;
    return std::string(text.substr(begin, end - begin));
}

}  // namespace kvl
