#include "kzm/impl/HeaderFields.h"

namespace qlix::kzm::impl {
namespace {

constexpr std::uint32_t kUnityMatrix[] = {0x10000, 0, 0, 0, 0x10000, 0, 0, 0, 0x40000000};

}  // namespace

void putUnityMatrix(FieldWriter& out) {
    for (const std::uint32_t word : kUnityMatrix) out.u32(word);
}

}  // namespace qlix::kzm::impl
