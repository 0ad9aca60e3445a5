#include "offline/WatchedWrites.h"

#include <cerrno>
#include <optional>
#include <sys/syscall.h>
#include <unistd.h>
#include <utility>

#include "support/OpenPath.h"

namespace kz::test {
namespace {

struct Watch {
    std::string pathEnd;
    std::string log;
    std::function<void()> look;
    std::optional<std::size_t> succeeding;
};

std::optional<Watch>& watch() {
    static std::optional<Watch> instance;
    return instance;
}

bool isWatched(int descriptor) { return watch() && isOpenPath(descriptor, watch()->pathEnd); }

/// Answers whether the write is to be made.
bool note(off_t offset, std::size_t size) {
    if (watch()->look) watch()->look();
    if (watch()->succeeding && (*watch()->succeeding)-- == 0) return false;
    watch()->log += std::to_string(offset) + "+" + std::to_string(size) + " ";
    return true;
}

}  // namespace

WatchedWrites::WatchedWrites(const std::string& pathEnd) {
    watch().emplace();
    watch()->pathEnd = pathEnd;
}

WatchedWrites::~WatchedWrites() { watch().reset(); }

std::string WatchedWrites::take() { return std::exchange(watch()->log, ""); }

void WatchedWrites::beforeEach(std::function<void()> look) { watch()->look = std::move(look); }

void WatchedWrites::failAfter(std::size_t succeeding) { watch()->succeeding = succeeding; }

}  // namespace kz::test

/// Stands in front of the system library's in this test program.
extern "C" ssize_t pwrite(int descriptor, const void* data, size_t size, off_t offset) {
    if (kz::test::isWatched(descriptor) && !kz::test::note(offset, size)) {
        errno = ENOSPC;
        return -1;
    }
    return ::syscall(SYS_pwrite64, descriptor, data, size, offset);
}
