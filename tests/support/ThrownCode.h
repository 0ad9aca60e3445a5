#pragma once

#include <cstdint>

#include "kzm/Exception.h"

namespace kz::test {

/// The number of the box library's exception that `action` throws, 0 if it throws nothing.
template <class Action>
std::uint32_t codeThrownBy(Action action) {
    try {
        action();
    } catch (const qlix::kzm::Exception& failure) {
        return failure.code();
    }
    return 0;
}

}  // namespace kz::test
