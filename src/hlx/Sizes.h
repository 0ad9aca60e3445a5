#pragma once

#include <cstdint>
#include <limits>

#include "hlx/HLXException.h"

namespace hlx {

/// The size of a container as the library's 32-bit number. Throws HLXException where it doesn't
/// fit.
template <typename Container>
std::uint32_t sizeOf(const Container& container) {
    if (container.size() > std::numeric_limits<std::uint32_t>::max()) {
        throw HLXException(HLX_ERROR_BAD_ARGUMENT);
    }
    return static_cast<std::uint32_t>(container.size());
}

}  // namespace hlx
