#pragma once

#include <cstddef>
#include <cstdint>

namespace qlix::kzm::impl {

/// One rule about the children of a box.
struct RequiredChild {
    enum class Kind {
        exactlyOne,       ///< exactly one child of `code`
        atLeastOne,       ///< one or more children of `code`
        exactlyOneAmong,  ///< exactly one child whose code is in `alternatives`
    };

    std::uint32_t code;
    Kind kind;
    const std::uint32_t* alternatives;  ///< a list that ends with 0, or null
};

/// The rules of one box class, which live as long as the program.
struct RequiredChildren {
    const RequiredChild* rows = nullptr;
    std::size_t count = 0;
};

/// The rules for boxes of a code, from the one table of them all; none for a code not in it.
RequiredChildren requiredChildrenOf(std::uint32_t type);

}  // namespace qlix::kzm::impl
