#include "qlix_hlx/Library.h"

#include <sys/resource.h>

#include "qlix_hlx/Credential.h"
#include "qlix_hlx/Handles.h"

namespace qlix::hlx {
namespace {

unsigned startCount = 0;
rlimit coreLimitBefore{};
bool coreLimitChanged = false;

/// A limit of 1 byte also stops dumps that the kernel pipes to a program; 0 wouldn't.
void forbidCoreFiles() {
    if (getrlimit(RLIMIT_CORE, &coreLimitBefore) != 0) return;
    rlimit limit = coreLimitBefore;
    limit.rlim_cur = limit.rlim_max < 1 ? limit.rlim_max : 1;
    coreLimitChanged = setrlimit(RLIMIT_CORE, &limit) == 0;
}

void allowCoreFiles() {
    if (coreLimitChanged) setrlimit(RLIMIT_CORE, &coreLimitBefore);
    coreLimitChanged = false;
}

}  // namespace

void start() {
    if (startCount == 0) forbidCoreFiles();
    ++startCount;
}

void stop() {
    requireStarted();
    --startCount;
    if (startCount > 0) return;
    Object::wipeAll();
    unloadLegacyProvider();
    allowCoreFiles();
}

void requireStarted() {
    if (startCount == 0) fail(HLX_ERROR_NOT_INITIALIZED);
}

}  // namespace qlix::hlx
