#include "qlix_hlx/Der.h"

namespace qlix::hlx {
namespace {

constexpr unsigned kInteger = 0x02;
constexpr unsigned kOctetString = 0x04;
constexpr unsigned kSequence = 0x30;
constexpr unsigned kContextConstructed = 0xA0;

/// The bytes of `value` from the first that isn't zero, at least one.
SecretBytes significantBytes(std::uint64_t value) {
    SecretBytes bytes;
    for (int shift = 56; shift >= 0; shift -= 8) {
        const auto byte = static_cast<std::uint8_t>(value >> shift);
        if (byte != 0 || !bytes.empty() || shift == 0) bytes.push_back(byte);
    }
    return bytes;
}

}  // namespace

Der& Der::integer(std::uint32_t number) {
    SecretBytes content = significantBytes(number);
    // The first bit is the sign.
    if ((content.front() & 0x80) != 0) content.insert(content.begin(), 0);
    value(kInteger, viewOf(content));
    return *this;
}

Der& Der::octets(ByteView content) {
    value(kOctetString, content);
    return *this;
}

Der& Der::sequence(const Der& content) {
    value(kSequence, viewOf(content.bytes_));
    return *this;
}

Der& Der::tagged(unsigned number, const Der& content) {
    value(kContextConstructed | number, viewOf(content.bytes_));
    return *this;
}

void Der::value(unsigned tag, ByteView content) {
    bytes_.push_back(static_cast<std::uint8_t>(tag));
    if (content.size < 0x80) {
        bytes_.push_back(static_cast<std::uint8_t>(content.size));
    } else {
        const SecretBytes length = significantBytes(content.size);
        bytes_.push_back(static_cast<std::uint8_t>(0x80 | length.size()));
        bytes_.insert(bytes_.end(), length.begin(), length.end());
    }
    bytes_.insert(bytes_.end(), content.data, content.data + content.size);
}

}  // namespace qlix::hlx
