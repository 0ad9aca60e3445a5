#include "decrypt/Segment.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace decrypt {
namespace {

std::uint64_t loadNumber(const Bytes& bytes, std::size_t at, std::size_t size) {
    if (at > bytes.size() || size > bytes.size() - at) throw std::runtime_error("segment cut off");
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < size; ++i) value = value * 256 + bytes[at + i];
    return value;
}

void tagsBetween(const Bytes& segment, std::size_t at, std::size_t end,
                 const std::function<void(const Bytes& tag)>& take) {
    while (at < end) {
        // Header of 11 bytes, body, size word.
        const std::size_t size = 11 + loadNumber(segment, at + 1, 3) + 4;
        if (size > end - at) throw std::runtime_error("a tag leaves its mdat");
        const auto start = segment.begin() + static_cast<std::ptrdiff_t>(at);
        take(Bytes(start, start + static_cast<std::ptrdiff_t>(size)));
        at += size;
    }
}

}  // namespace

Bytes readFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) throw std::runtime_error("can't read " + path);
    return Bytes(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

std::string metadataTextOf(const Bytes& segment) {
    const std::string type = "flxs";
    const auto hit = std::search(segment.begin(), segment.end(), type.begin(), type.end());
    if (hit == segment.end()) return {};
    const auto start = hit + 4;
    return std::string(start, std::find(start, segment.end(), 0));
}

void forEachTag(const Bytes& segment, const std::function<void(const Bytes& tag)>& take) {
    constexpr std::uint64_t kMdat = 0x6D646174;
    std::size_t at = 0;
    while (at < segment.size()) {
        std::uint64_t size = loadNumber(segment, at, 4);
        std::size_t header = 8;
        if (size == 1) {
            size = loadNumber(segment, at + 8, 8);
            header = 16;
        }
        if (size < header || size > segment.size() - at) throw std::runtime_error("broken box");
        if (loadNumber(segment, at + 4, 4) == kMdat) {
            tagsBetween(segment, at + header, at + size, take);
        }
        at += size;
    }
}

}  // namespace decrypt
