#include "qlix_hlx/Library.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <malloc.h>
#include <sys/resource.h>

#include <openssl/crypto.h>

#include "qlix_hlx/Credential.h"
#include "qlix_hlx/Handles.h"

namespace qlix::hlx {
namespace {

unsigned startCount = 0;
bool openSslWasAsked = false;
rlimit coreLimitBefore{};
bool coreLimitChanged = false;

// To check a PFX, OpenSSL makes a copy of the password in UTF-16 and frees it unwiped. So it gets
// allocation functions that wipe all that it frees.

void* allocateForOpenSsl(std::size_t size, const char* /*file*/, int /*line*/) {
    return size == 0 ? nullptr : std::malloc(size);
}

void releaseForOpenSsl(void* memory, const char* /*file*/, int /*line*/) {
    if (memory != nullptr) OPENSSL_cleanse(memory, malloc_usable_size(memory));
    std::free(memory);
}

void* moveForOpenSsl(void* memory, std::size_t size, const char* file, int line) {
    void* moved = allocateForOpenSsl(size, file, line);
    if (memory == nullptr || (moved == nullptr && size > 0)) return moved;
    if (size > 0) std::memcpy(moved, memory, std::min(size, malloc_usable_size(memory)));
    releaseForOpenSsl(memory, file, line);
    return moved;
}

/// OpenSSL takes them only before its first allocation; a process that has used it already keeps
/// its own.
void wipeWhatOpenSslFrees() {
    if (!openSslWasAsked) {
        CRYPTO_set_mem_functions(allocateForOpenSsl, moveForOpenSsl, releaseForOpenSsl);
    }
    openSslWasAsked = true;
}

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
    wipeWhatOpenSslFrees();
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
