#pragma once

#include <string>

#include "support/Bytes.h"

namespace kz::test {

/// Base64 one bit at a time.
inline std::string slowBase64(const Bytes& bytes) {
    std::string bits;
    for (const std::uint8_t byte : bytes) {
        for (int bit = 7; bit >= 0; --bit) bits += ((byte >> bit) & 1) != 0 ? '1' : '0';
    }
    while (bits.size() % 6 != 0) bits += '0';
    std::string text;
    for (std::size_t i = 0; i < bits.size(); i += 6) {
        const int value = std::stoi(bits.substr(i, 6), nullptr, 2);
        if (value < 26) text += static_cast<char>('A' + value);
        if (value >= 26 && value < 52) text += static_cast<char>('a' + value - 26);
        if (value >= 52 && value < 62) text += static_cast<char>('0' + value - 52);
        if (value == 62) text += '+';
        if (value == 63) text += '/';
    }
    while (text.size() % 4 != 0) text += '=';
    return text;
}

}  // namespace kz::test
