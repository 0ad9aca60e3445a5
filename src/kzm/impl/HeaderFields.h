#pragma once

#include <cstdint>

#include "kzm/impl/FieldWriter.h"

namespace qlix::kzm::impl {

constexpr std::uint64_t kMatrixSize = 36;

/// The matrix that leaves pictures as they are: nine words of 32 bits.
void putUnityMatrix(FieldWriter& out);

}  // namespace qlix::kzm::impl
