#include "support/OrdinaryUser.h"

#include <stdexcept>
#include <sys/prctl.h>
#include <unistd.h>

namespace kz::test {
namespace {

constexpr uid_t kNobody = 65534;

}  // namespace

OrdinaryUser::OrdinaryUser() : former_(geteuid()) {
    if (former_ == 0 && seteuid(kNobody) != 0) throw std::runtime_error("can't leave user 0");
}

OrdinaryUser::~OrdinaryUser() {
    if (former_ != 0) return;
    if (seteuid(former_) != 0) _exit(1);
    // A change of user makes a process opaque, and then the leak checker can't look into it.
    prctl(PR_SET_DUMPABLE, 1);
}

}  // namespace kz::test
