#include "support/FailingClose.h"

#include <cerrno>
#include <sys/syscall.h>
#include <unistd.h>
#include <utility>

#include "support/OpenPath.h"

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

bool fails(int descriptor) { return fault().error != 0 && isOpenPath(descriptor, fault().pathEnd); }

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
