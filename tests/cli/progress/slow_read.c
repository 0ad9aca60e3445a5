/* For LD_PRELOAD: a read of a file takes KZ_READ_MS milliseconds longer. */
#define _GNU_SOURCE
#include <dlfcn.h>
#include <stdlib.h>
#include <time.h>
#include <unistd.h>

static void wait_a_while(void) {
    const char* text = getenv("KZ_READ_MS");
    const long ms = text != NULL ? atol(text) : 0;
    struct timespec left = {ms / 1000, ms % 1000 * 1000000};
    while (nanosleep(&left, &left) != 0) {
    }
}

ssize_t read(int fd, void* buffer, size_t count) {
    static ssize_t (*real)(int, void*, size_t);
    if (real == NULL) *(void**)(&real) = dlsym(RTLD_NEXT, "read");
    wait_a_while();
    return real(fd, buffer, count);
}

ssize_t pread64(int fd, void* buffer, size_t count, off64_t offset) {
    static ssize_t (*real)(int, void*, size_t, off64_t);
    if (real == NULL) *(void**)(&real) = dlsym(RTLD_NEXT, "pread64");
    wait_a_while();
    return real(fd, buffer, count, offset);
}
