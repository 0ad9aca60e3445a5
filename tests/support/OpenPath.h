#pragma once

#include <string>

namespace kz::test {

/// Whether the path of the file that is open as `descriptor` ends with `pathEnd`.
bool isOpenPath(int descriptor, const std::string& pathEnd);

}  // namespace kz::test
