#pragma once

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>

#include "support/Bytes.h"

namespace kz::test {

/// Walks a byte string, big-endian. Throws std::runtime_error at its end.
class ByteCursor {
public:
    explicit ByteCursor(const Bytes& bytes) : bytes_(bytes), end_(bytes.size()) {}
    ByteCursor(const Bytes& bytes, std::size_t start, std::size_t end)
        : bytes_(bytes), position_(start), end_(end) {
        if (start > end || end > bytes.size()) throw std::runtime_error("range outside the bytes");
    }

    std::size_t position() const { return position_; }
    std::size_t left() const { return end_ - position_; }
    void seek(std::size_t position) {
        if (position > end_) throw std::runtime_error("seek behind the end");
        position_ = position;
    }
    void skip(std::size_t count) { take(count); }

    std::uint64_t u8() { return number(1); }
    std::uint64_t u16() { return number(2); }
    std::uint64_t u24() { return number(3); }
    std::uint64_t u32() { return number(4); }
    std::uint64_t u64() { return number(8); }
    Bytes bytes(std::size_t count) { return bytes_.slice(take(count), count); }
    std::string text(std::size_t count) { return bytes(count).str(); }
    /// Up to a zero byte, which is passed over.
    std::string zeroEnded() {
        std::string out;
        for (auto c = u8(); c != 0; c = u8()) out.push_back(static_cast<char>(c));
        return out;
    }

private:
    std::size_t take(std::size_t count) {
        if (count > left()) throw std::runtime_error("bytes end too early");
        position_ += count;
        return position_ - count;
    }
    std::uint64_t number(int size) {
        std::uint64_t value = 0;
        for (std::size_t at = take(static_cast<std::size_t>(size)); size > 0; --size) {
            value = (value << 8) | bytes_[at++];
        }
        return value;
    }

    const Bytes& bytes_;  // outlives the cursor
    std::size_t position_ = 0;
    std::size_t end_;
};

}  // namespace kz::test
