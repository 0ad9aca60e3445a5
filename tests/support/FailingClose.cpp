#include "support/FailingClose.h"

#include <cerrno>
#include <sys/syscall.h>
#include <unistd.h>
#include <utility>

namespace kz::test {
namespace {

struct Fault {
    std::string pathEnd;
    int error = 0;  // 0: none
};

Fault& fault() {
    static Fault instance;
    return instance;
}

bool fails(int descriptor) {
    const std::string& end = fault().pathEnd;
    if (fault().error == 0) return false;
    char buffer[4096];
    const std::string link = "/proc/self/fd/" + std::to_string(descriptor);
    const ssize_t length = ::readlink(link.c_str(), buffer, sizeof(buffer));
    const std::string path(buffer, length < 0 ? 0 : static_cast<std::size_t>(length));
    return path.size() >= end.size() &&
           path.compare(path.size() - end.size(), end.size(), end) == 0;
}

}  // namespace

FailingClose::FailingClose(std::string pathEnd, int error) {
    fault() = {std::move(pathEnd), error};
}

FailingClose::~FailingClose() { fault() = {}; }

}  // namespace kz::test

/// Stands in front of the system library's in every program that uses the class above.
extern "C" int close(int descriptor) {
    const bool failing = kz::test::fails(descriptor);
    const auto result = static_cast<int>(::syscall(SYS_close, descriptor));
    if (!failing) return result;
    errno = kz::test::fault().error;
    return -1;
}
