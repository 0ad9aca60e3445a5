#include "kzs/Base64.h"

#include <stdexcept>

#include <boost/archive/iterators/base64_from_binary.hpp>
#include <boost/archive/iterators/transform_width.hpp>

#include "kzs/base/ByteOrder.h"

namespace torvo::kzs {

namespace {

constexpr std::size_t kGroupSize = 4;
constexpr std::size_t kBytesPerGroup = 3;

[[noreturn]] void refuse() { throw std::runtime_error("invalid base64 text"); }

std::uint32_t codeOf(char c) {
    constexpr std::string_view kAlphabet =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    // On purpose: `-` stands for `/`. Pinned by Base64Test.DecodesAMinusAsASlash.
    const std::size_t code = kAlphabet.find(c == '-' ? '/' : c);
    if (code == std::string_view::npos) refuse();
    return static_cast<std::uint32_t>(code);
}

/// Appends the bytes of one group; `filled` of its characters aren't padding.
void appendGroup(std::string_view group, std::size_t filled, std::vector<std::uint8_t>& bytes) {
    constexpr std::uint32_t kRadix = 64;
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < kGroupSize; ++i) {
        value = value * kRadix + (i < filled ? codeOf(group[i]) : 0);
    }
    std::uint8_t unpacked[kBytesPerGroup];
    storeU24(unpacked, value);
    bytes.insert(bytes.end(), unpacked, unpacked + (filled - 1));
}

/// How many characters of the last group aren't padding: two to four.
std::size_t filledCount(std::string_view group) {
    if (group[3] != '=') return kGroupSize;
    return group[2] == '=' ? 2 : 3;
}

}  // namespace

std::string base64Encode(const std::vector<std::uint8_t>& bytes) {
    using namespace boost::archive::iterators;
    using Encoder =
        base64_from_binary<transform_width<std::vector<std::uint8_t>::const_iterator, 6, 8>>;
    std::string text(Encoder(bytes.begin()), Encoder(bytes.end()));
    while (text.size() % kGroupSize != 0) text += '=';
    return text;
}

std::vector<std::uint8_t> base64Decode(std::string_view text) {
    if (text.size() % kGroupSize != 0) refuse();
    std::vector<std::uint8_t> bytes;
    bytes.reserve(text.size() / kGroupSize * kBytesPerGroup);
    for (std::size_t offset = 0; offset < text.size(); offset += kGroupSize) {
        const std::string_view group = text.substr(offset, kGroupSize);
        const bool isLast = offset + kGroupSize == text.size();
        appendGroup(group, isLast ? filledCount(group) : kGroupSize, bytes);
    }
    return bytes;
}

}  // namespace torvo::kzs
