/*
 * A shared object for LD_PRELOAD that lets one chosen allocation of a program fail.
 *
 * Environment:
 *   KZ_MEMORY_AT       which allocation fails, from 1; 0 or unset: none
 *   KZ_MEMORY_FOREVER  1: every allocation from that one on fails as well
 *   KZ_MEMORY_REPORT   a file that gets the count of allocations when the program ends
 *
 * Counted are malloc, calloc and realloc, and so operator new, from the first statement of `main`
 * on: what the loader and the constructors of libraries need is no matter of the program.
 */
#define _GNU_SOURCE
#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

extern void* __libc_malloc(size_t size);
extern void* __libc_calloc(size_t count, size_t size);
extern void* __libc_realloc(void* memory, size_t size);

static long calls;
static long failAt;
static int forever;
static int counting;

static int fails(void) {
    if (!counting) return 0;
    ++calls;
    if (failAt == 0 || calls < failAt || (calls > failAt && !forever)) return 0;
    errno = ENOMEM;
    return 1;
}

void* malloc(size_t size) { return fails() ? NULL : __libc_malloc(size); }

void* calloc(size_t count, size_t size) { return fails() ? NULL : __libc_calloc(count, size); }

void* realloc(void* memory, size_t size) { return fails() ? NULL : __libc_realloc(memory, size); }

static int (*realMain)(int, char**, char**);

static void report(void) {
    counting = 0;
    const char* path = getenv("KZ_MEMORY_REPORT");
    if (path == NULL) return;
    char line[32];
    const int length = snprintf(line, sizeof(line), "%ld\n", calls);
    const int file = open(path, O_WRONLY | O_CREAT | O_TRUNC, 0600);
    if (file < 0) return;
    if (write(file, line, (size_t)length) != length) unlink(path);
    close(file);
}

static int countedMain(int argc, char** argv, char** environment) {
    const char* at = getenv("KZ_MEMORY_AT");
    const char* all = getenv("KZ_MEMORY_FOREVER");
    failAt = at != NULL ? atol(at) : 0;
    forever = all != NULL && *all == '1';
    counting = 1;
    const int status = realMain(argc, argv, environment);
    report();
    return status;
}

int __libc_start_main(int (*program)(int, char**, char**), int argc, char** argv, void (*init)(void),
                      void (*fini)(void), void (*loaderFini)(void), void* stackEnd) {
    int (*real)(int (*)(int, char**, char**), int, char**, void (*)(void), void (*)(void),
                void (*)(void), void*) = NULL;
    *(void**)(&real) = dlsym(RTLD_NEXT, "__libc_start_main");
    realMain = program;
    return real(countedMain, argc, argv, init, fini, loaderFini, stackEnd);
}
