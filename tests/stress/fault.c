/*
 * A shared object for LD_PRELOAD that makes one chosen file call of a program fail.
 *
 * Environment:
 *   KZ_FAULT_AT      which call fails, from 1; 0 or unset: none
 *   KZ_FAULT_KIND    ENOSPC, EIO, EDQUOT, EINTR (once, then the call goes through), or SHORT
 *                    (a read or write of half the count; other calls go through)
 *   KZ_FAULT_FOREVER 1: every call from that one on fails as well
 *   KZ_FAULT_REPORT  a file that gets one line at the end: how many calls there were, the name of
 *                    the call that failed, and its path where it has one
 *   KZ_FAULT_PREFIX  only calls on files whose path begins so count (default: every file that was
 *                    opened through these functions)
 */
#define _GNU_SOURCE
#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/types.h>
#include <sys/uio.h>
#include <unistd.h>

enum { kDescriptors = 4096 };

enum { kOpened = 1, kCopy = 2 };

static unsigned char watched[kDescriptors];
static long calls;
static long failAt = -1;
static int failErrno;
static int forever;
static int shortCount;
static char failedName[32];
static char failedPath[256];

static void readSettings(void) {
    if (failAt >= 0) return;
    const char* at = getenv("KZ_FAULT_AT");
    const char* kind = getenv("KZ_FAULT_KIND");
    const char* all = getenv("KZ_FAULT_FOREVER");
    failAt = at != NULL ? atol(at) : 0;
    forever = all != NULL && *all == '1';
    failErrno = EIO;
    if (kind == NULL) return;
    if (strcmp(kind, "ENOSPC") == 0) failErrno = ENOSPC;
    if (strcmp(kind, "EDQUOT") == 0) failErrno = EDQUOT;
    if (strcmp(kind, "EINTR") == 0) failErrno = EINTR;
    if (strcmp(kind, "SHORT") == 0) shortCount = 1;
}

__attribute__((destructor)) static void report(void) {
    const char* path = getenv("KZ_FAULT_REPORT");
    if (path == NULL) return;
    char line[320];
    const int length = snprintf(line, sizeof(line), "%ld %s %s\n", calls, failedName, failedPath);
    int (*realOpen)(const char*, int, ...) = dlsym(RTLD_NEXT, "open");
    ssize_t (*realWrite)(int, const void*, size_t) = dlsym(RTLD_NEXT, "write");
    const int fd = realOpen(path, O_WRONLY | O_CREAT | O_TRUNC, 0600);
    if (fd >= 0 && realWrite(fd, line, (size_t)length) < 0) return;
}

static int isWatched(int fd) { return fd >= 0 && fd < kDescriptors && watched[fd]; }

static int pathCounts(const char* path) {
    const char* prefix = getenv("KZ_FAULT_PREFIX");
    return prefix == NULL || strncmp(path, prefix, strlen(prefix)) == 0;
}

static void watch(int fd) {
    if (fd >= 0 && fd < kDescriptors) watched[fd] = kOpened;
}

/* 1 when this call is to fail. */
static int fails(const char* name) {
    readSettings();
    ++calls;
    if (failAt == 0 || calls < failAt || (calls > failAt && !forever)) return 0;
    if (calls == failAt) snprintf(failedName, sizeof(failedName), "%s", name);
    errno = failErrno;
    return 1;
}

static int failsOn(const char* name, const char* path) {
    if (!fails(name)) return 0;
    const int error = errno;
    if (calls == failAt) snprintf(failedPath, sizeof(failedPath), "%s", path);
    errno = error;
    return 1;
}

#define REAL(result, name, ...)                \
    static result (*real)(__VA_ARGS__) = NULL; \
    if (real == NULL) *(void**)(&real) = dlsym(RTLD_NEXT, name)

static int openCounted(const char* name, const char* path, int flags, mode_t mode) {
    REAL(int, "open", const char*, int, ...);
    const int counts = pathCounts(path);
    if (counts && failsOn(name, path) && !shortCount) return -1;
    const int fd = real(path, flags, mode);
    if (counts) watch(fd);
    return fd;
}

int open(const char* path, int flags, ...) {
    va_list list;
    va_start(list, flags);
    const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(list, mode_t) : 0;
    va_end(list);
    return openCounted("open", path, flags, mode);
}

int open64(const char* path, int flags, ...) {
    va_list list;
    va_start(list, flags);
    const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(list, mode_t) : 0;
    va_end(list);
    return openCounted("open", path, flags, mode);
}

/* The standard library's file streams open and close through these. */
static FILE* fopenCounted(const char* path, const char* mode) {
    REAL(FILE*, "fopen", const char*, const char*);
    const int counts = pathCounts(path);
    if (counts && failsOn("fopen", path) && !shortCount) return NULL;
    FILE* file = real(path, mode);
    if (counts && file != NULL) watch(fileno(file));
    return file;
}
FILE* fopen(const char* path, const char* mode) { return fopenCounted(path, mode); }
FILE* fopen64(const char* path, const char* mode) { return fopenCounted(path, mode); }

int fclose(FILE* file) {
    REAL(int, "fclose", FILE*);
    const int fd = fileno(file);
    const int counts = isWatched(fd);
    if (counts) watched[fd] = 0;
    /* As for close below. The standard library would close an interrupted one twice. */
    const int failing = counts && fails("fclose") && !shortCount && failErrno != EINTR;
    const int saved = errno;
    const int result = real(file);
    if (!failing) return result;
    errno = saved;
    return EOF;
}

ssize_t write(int fd, const void* buffer, size_t count) {
    REAL(ssize_t, "write", int, const void*, size_t);
    if (isWatched(fd) && count > 0 && fails("write")) {
        if (!shortCount) return -1;
        if (count > 1) count /= 2;
    }
    return real(fd, buffer, count);
}

ssize_t pwrite64(int fd, const void* buffer, size_t count, off64_t offset) {
    REAL(ssize_t, "pwrite64", int, const void*, size_t, off64_t);
    if (isWatched(fd) && count > 0 && fails("pwrite")) {
        if (!shortCount) return -1;
        if (count > 1) count /= 2;
    }
    return real(fd, buffer, count, offset);
}
ssize_t pwrite(int fd, const void* buffer, size_t count, off_t offset) {
    return pwrite64(fd, buffer, count, offset);
}

ssize_t writev(int fd, const struct iovec* parts, int count) {
    REAL(ssize_t, "writev", int, const struct iovec*, int);
    if (isWatched(fd) && fails("writev")) {
        if (!shortCount) return -1;
        if (count > 1) return real(fd, parts, count - 1);
        return write(fd, parts[0].iov_base, parts[0].iov_len > 1 ? parts[0].iov_len / 2 : 1);
    }
    return real(fd, parts, count);
}

ssize_t pwritev64(int fd, const struct iovec* parts, int count, off64_t offset) {
    REAL(ssize_t, "pwritev64", int, const struct iovec*, int, off64_t);
    if (isWatched(fd) && fails("pwritev")) {
        if (!shortCount) return -1;
        if (count > 1) return real(fd, parts, count - 1, offset);
    }
    return real(fd, parts, count, offset);
}
ssize_t pwritev(int fd, const struct iovec* parts, int count, off_t offset) {
    return pwritev64(fd, parts, count, offset);
}

ssize_t read(int fd, void* buffer, size_t count) {
    REAL(ssize_t, "read", int, void*, size_t);
    if (isWatched(fd) && count > 0 && fails("read")) {
        if (!shortCount) return -1;
        if (count > 1) count /= 2;
    }
    return real(fd, buffer, count);
}

ssize_t pread64(int fd, void* buffer, size_t count, off64_t offset) {
    REAL(ssize_t, "pread64", int, void*, size_t, off64_t);
    if (isWatched(fd) && count > 0 && fails("pread")) {
        if (!shortCount) return -1;
        if (count > 1) count /= 2;
    }
    return real(fd, buffer, count, offset);
}
ssize_t pread(int fd, void* buffer, size_t count, off_t offset) {
    return pread64(fd, buffer, count, offset);
}

off64_t lseek64(int fd, off64_t offset, int whence) {
    REAL(off64_t, "lseek64", int, off64_t, int);
    /* Asking for the position is told apart: it moves nothing. */
    const char* name = offset == 0 && whence == SEEK_CUR ? "tell" : "lseek";
    if (isWatched(fd) && fails(name) && !shortCount && failErrno != EINTR) return -1;
    return real(fd, offset, whence);
}
off_t lseek(int fd, off_t offset, int whence) { return lseek64(fd, offset, whence); }

int ftruncate64(int fd, off64_t size) {
    REAL(int, "ftruncate64", int, off64_t);
    if (isWatched(fd) && fails("ftruncate") && !shortCount) return -1;
    return real(fd, size);
}
int ftruncate(int fd, off_t size) { return ftruncate64(fd, size); }

int rename(const char* from, const char* to) {
    REAL(int, "rename", const char*, const char*);
    if (pathCounts(from) && failsOn("rename", from) && !shortCount && failErrno != EINTR) return -1;
    return real(from, to);
}

int dup(int fd) {
    REAL(int, "dup", int);
    const int counts = isWatched(fd);
    if (counts && fails("dup") && !shortCount) return -1;
    const int copy = real(fd);
    if (counts && copy >= 0 && copy < kDescriptors) watched[copy] = kCopy;
    return copy;
}

int close(int fd) {
    REAL(int, "close", int);
    const int counts = isWatched(fd);
    const int isCopy = counts && watched[fd] == kCopy;
    if (counts) watched[fd] = 0;
    /* A close that fails has closed all the same; an interrupted one is never seen here. */
    const int failing =
        counts && fails(isCopy ? "close-copy" : "close") && !shortCount && failErrno != EINTR;
    const int saved = errno;
    const int result = real(fd);
    if (!failing) return result;
    errno = saved;
    return -1;
}
