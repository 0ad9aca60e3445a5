#include "kzm/WarningHandler.h"

namespace qlix::kzm {

bool WarningHandler::warn(std::uint32_t /*code*/) { return true; }

}  // namespace qlix::kzm
