#include "qlix_hlx/Random.h"

#include <limits>

#include <openssl/rand.h>

#include "qlix_hlx/Failure.h"

namespace qlix::hlx {
namespace {

bool fromOpenSsl(std::uint8_t* bytes, std::size_t size) {
    if (size > static_cast<std::size_t>(std::numeric_limits<int>::max())) return false;
    return RAND_bytes(bytes, static_cast<int>(size)) == 1;
}

RandomSource currentSource = fromOpenSsl;

}  // namespace

void fillRandom(std::uint8_t* bytes, std::size_t size) {
    if (!currentSource(bytes, size)) fail(HLX_ERROR_CRYPTO);
}

void setRandomSource(RandomSource source) {
    currentSource = source == nullptr ? fromOpenSsl : source;
}

}  // namespace qlix::hlx
