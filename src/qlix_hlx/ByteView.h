#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "qlix_hlx/Secret.h"

namespace qlix::hlx {

/// A run of bytes that belong to someone else.
struct ByteView {
    const std::uint8_t* data = nullptr;
    std::size_t size = 0;
};

inline ByteView viewOf(std::string_view text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

inline ByteView viewOf(const SecretBytes& bytes) { return {bytes.data(), bytes.size()}; }

}  // namespace qlix::hlx
