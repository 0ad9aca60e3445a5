#pragma once

#include <cstdint>

#include "qlix_flv/qlix_flv_error.h"

namespace qlix::flv {

/// A failure inside the library; it ends at the C interface, which returns its code.
struct Failure {
    QlixFLVError code;
};

[[noreturn]] inline void fail(QlixFLVError code) { throw Failure{code}; }

}  // namespace qlix::flv
