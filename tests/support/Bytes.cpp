#include "support/Bytes.h"

#include <algorithm>
#include <cstring>
#include <sstream>
#include <stdexcept>

namespace kz::test {
namespace {

Bytes bigEndian(std::uint64_t value, int count) {
    Bytes out;
    for (int shift = (count - 1) * 8; shift >= 0; shift -= 8) {
        out.push_back(static_cast<std::uint8_t>(value >> shift));
    }
    return out;
}

std::string window(const Bytes& bytes, std::size_t at) {
    std::ostringstream out;
    out << std::hex;
    const std::size_t from = at < 8 ? 0 : at - 8;
    for (std::size_t i = from; i < std::min(bytes.size(), at + 16); ++i) {
        out << (i == at ? " >" : " ") << (bytes[i] < 16 ? "0" : "") << static_cast<int>(bytes[i]);
    }
    return out.str();
}

}  // namespace

Bytes& Bytes::operator+=(const Bytes& more) {
    const Bytes copy = more;  // `more` may be this object
    insert(end(), copy.begin(), copy.end());
    return *this;
}

Bytes Bytes::cutTo(std::size_t count) const { return slice(0, std::min(count, size())); }

Bytes Bytes::slice(std::size_t offset, std::size_t count) const {
    if (offset > size() || count > size() - offset) throw std::out_of_range("Bytes::slice");
    Bytes out;
    out.assign(begin() + static_cast<std::ptrdiff_t>(offset),
               begin() + static_cast<std::ptrdiff_t>(offset + count));
    return out;
}

Bytes Bytes::patched(std::size_t offset, const Bytes& patch) const {
    if (offset > size() || patch.size() > size() - offset) {
        throw std::out_of_range("Bytes::patched");
    }
    Bytes out = *this;
    std::copy(patch.begin(), patch.end(), out.begin() + static_cast<std::ptrdiff_t>(offset));
    return out;
}

std::size_t Bytes::find(std::string_view letters) const {
    const auto hit = std::search(begin(), end(), letters.begin(), letters.end());
    if (hit == end()) throw std::logic_error("no \"" + std::string(letters) + "\" in the bytes");
    return static_cast<std::size_t>(hit - begin());
}

Bytes operator+(Bytes left, const Bytes& right) {
    left += right;
    return left;
}

Bytes u8(std::uint64_t value) { return bigEndian(value, 1); }
Bytes u16(std::uint64_t value) { return bigEndian(value, 2); }
Bytes u24(std::uint64_t value) { return bigEndian(value, 3); }
Bytes u32(std::uint64_t value) { return bigEndian(value, 4); }
Bytes u64(std::uint64_t value) { return bigEndian(value, 8); }

Bytes f64(double value) {
    std::uint64_t bits = 0;
    static_assert(sizeof(bits) == sizeof(value), "IEEE 754 doubles");
    std::memcpy(&bits, &value, sizeof(bits));
    return u64(bits);
}

Bytes text(std::string_view characters) {
    Bytes out;
    out.assign(characters.begin(), characters.end());
    return out;
}

Bytes raw(std::initializer_list<int> values) {
    Bytes out;
    for (int value : values) out.push_back(static_cast<std::uint8_t>(value));
    return out;
}

Bytes fill(std::size_t count, int value) {
    Bytes out;
    out.assign(count, static_cast<std::uint8_t>(value));
    return out;
}

Bytes pattern(std::size_t count, unsigned seed) {
    Bytes out;
    out.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        out.push_back(static_cast<std::uint8_t>(seed * 31U + i * 7U));
    }
    return out;
}

Bytes hex(std::string_view digits) {
    Bytes out;
    int high = -1;
    for (char c : digits) {
        int value = 0;
        if (c >= '0' && c <= '9') {
            value = c - '0';
        } else if (c >= 'a' && c <= 'f') {
            value = c - 'a' + 10;
        } else if (c >= 'A' && c <= 'F') {
            value = c - 'A' + 10;
        } else if (c == ' ' || c == '\n' || c == '\t') {
            continue;
        } else {
            throw std::logic_error("hex: not a hex digit");
        }
        if (high < 0) {
            high = value;
        } else {
            out.push_back(static_cast<std::uint8_t>(high * 16 + value));
            high = -1;
        }
    }
    if (high >= 0) throw std::logic_error("hex: odd count of digits");
    return out;
}

Bytes hexTable(std::string_view rows) {
    Bytes out;
    std::istringstream lines{std::string(rows)};
    std::string line;
    while (std::getline(lines, line)) {
        std::istringstream words(line);
        std::string offset;
        std::string digits;
        if (!(words >> offset)) continue;
        if (std::stoull(offset) != out.size()) {
            throw std::logic_error("hexTable: row says offset " + offset +
                                   ", bytes before it: " + std::to_string(out.size()));
        }
        if (!(words >> digits)) throw std::logic_error("hexTable: row without bytes");
        out += hex(digits);
    }
    return out;
}

std::string difference(const Bytes& actual, const Bytes& expected) {
    if (actual == expected) return {};
    std::size_t at = 0;
    while (at < actual.size() && at < expected.size() && actual[at] == expected[at]) ++at;
    std::ostringstream out;
    out << "sizes " << actual.size() << " and " << expected.size() << ", first difference at " << at
        << "\n  actual  " << window(actual, at) << "\n  expected" << window(expected, at);
    return out.str();
}

Bytes bytesOf(const std::string& characters) { return text(characters); }

Bytes bytesOf(const void* data, std::size_t size) {
    const auto* first = static_cast<const std::uint8_t*>(data);
    Bytes out;
    out.assign(first, first + size);
    return out;
}

}  // namespace kz::test
