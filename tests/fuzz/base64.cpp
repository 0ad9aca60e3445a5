#include "kzs/Base64.h"

#include <algorithm>
#include <stdexcept>
#include <string>
#include <vector>

#include "fuzz/FuzzTarget.h"

using namespace torvo::kzs;

/// Bytes survive both ways; a text that is taken comes back up to its spare bits and hyphens.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::vector<std::uint8_t> bytes(data, data + size);
    kz::fuzz::require(base64Decode(base64Encode(bytes)) == bytes, "bytes come back");

    const std::string text(bytes.begin(), bytes.end());
    std::vector<std::uint8_t> decoded;
    try {
        decoded = base64Decode(text);
    } catch (const std::runtime_error&) {
        return 0;
    }
    const std::string again = base64Encode(decoded);
    kz::fuzz::require(again.size() == text.size(), "a text comes back in its length");
    kz::fuzz::require(base64Decode(again) == decoded, "a text means the same when it comes back");
    return 0;
}
