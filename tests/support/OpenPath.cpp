#include "support/OpenPath.h"

#include <unistd.h>

namespace kz::test {

bool isOpenPath(int descriptor, const std::string& pathEnd) {
    char buffer[4096];
    const std::string link = "/proc/self/fd/" + std::to_string(descriptor);
    const ssize_t length = ::readlink(link.c_str(), buffer, sizeof(buffer));
    const std::string path(buffer, length < 0 ? 0 : static_cast<std::size_t>(length));
    return path.size() >= pathEnd.size() &&
           path.compare(path.size() - pathEnd.size(), pathEnd.size(), pathEnd) == 0;
}

}  // namespace kz::test
