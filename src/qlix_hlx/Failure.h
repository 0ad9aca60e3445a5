#pragma once

#include <cstdint>

#include "qlix_hlx/qlix_hlx_codes.h"

namespace qlix::hlx {

/// The only exception of the library's own. It never leaves the library: the entry points turn it
/// into its result.
struct Failure {
    std::uint32_t result;
};

[[noreturn]] inline void fail(std::uint32_t code) { throw Failure{code}; }

/// `detail` is one of HLX_CERT_....
[[noreturn]] inline void refuseCertificate(std::uint32_t detail) {
    throw Failure{(detail << 16) | HLX_ERROR_INVALID_CERTIFICATE};
}

}  // namespace qlix::hlx
