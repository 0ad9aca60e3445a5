#pragma once

#include <cstddef>
#include <cstdint>

namespace qlix::hlx {

/// Fills `size` bytes; false when it can't.
using RandomSource = bool (*)(std::uint8_t* bytes, std::size_t size);

/// Fills from the current source, which is OpenSSL's generator. Throws Failure.
void fillRandom(std::uint8_t* bytes, std::size_t size);

/// Puts another source in place, for tests; null brings back OpenSSL's generator. What OpenSSL
/// draws for itself inside an envelope or a signature isn't reached by this.
void setRandomSource(RandomSource source);

}  // namespace qlix::hlx
