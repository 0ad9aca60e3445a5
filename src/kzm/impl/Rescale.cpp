#include "kzm/impl/Rescale.h"

#include <algorithm>
#include <limits>

#include "kzm/ErrorCode.h"

namespace qlix::kzm::impl {
namespace {

__extension__ using Wide = __int128;

template <class T>
T rescaleAs(T value, std::uint32_t from, std::uint32_t to) {
    if (from == to) return value;
    if (from == 0) raise(ErrorCode::noTimescale);
    const Wide exact = (Wide{to} * value + (from - 1) / 2) / from;
    return static_cast<T>(
        std::clamp<Wide>(exact, std::numeric_limits<T>::min(), std::numeric_limits<T>::max()));
}

}  // namespace

std::uint64_t rescale(std::uint64_t value, std::uint32_t from, std::uint32_t to) {
    return rescaleAs(value, from, to);
}

std::int64_t rescaleSigned(std::int64_t value, std::uint32_t from, std::uint32_t to) {
    return rescaleAs(value, from, to);
}

}  // namespace qlix::kzm::impl
