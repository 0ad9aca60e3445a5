#pragma once

#include <cstdint>

#include "kzm/WarningHandler.h"

namespace torvo::kzspkgutil {

/// Tolerates every fault that the box library can live with: such faults neither stop a run nor
/// are they shown.
class KZMWarningHandler final : public qlix::kzm::WarningHandler {
public:
    bool warn(std::uint32_t) override { return true; }
};

}  // namespace torvo::kzspkgutil
