// A shared object for LD_PRELOAD that lets chosen allocations of a program fail.
//
// Environment:
//   KZ_MEMORY_AT       which allocation fails, from 1; 0 or unset: none
//   KZ_MEMORY_FOREVER  1: every allocation from that one on fails as well
//   KZ_MEMORY_REPORT   a file that gets the count of allocations when the program ends
//   KZ_MEMORY_EACH     "FIRST STEP DESCRIPTOR": at the allocation FIRST and every STEP behind it
//   the
//                      program forks. The child's allocation fails, the child goes on to its end
//                      in a copy of the working folder, ../N for the N-th allocation, with standard
//                      output and error in the files stdout and stderr there, and DESCRIPTOR gets
//                      the line "N WAIT_STATUS". The program itself goes on undisturbed. What it
//                      writes must be below its working folder and named by relative paths.
//
// Counted are malloc, calloc, realloc and operator new from the first statement of `main` on: what
// the loader and the constructors of libraries need is no matter of the program. In front of the
// address sanitizer, which has its own such functions, those are called (with the option
// verify_asan_link_order=0).

#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <execinfo.h>
#include <fcntl.h>
#include <filesystem>
#include <new>
#include <string>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* memory, std::size_t size);
[[gnu::weak]] void* __interceptor_malloc(std::size_t size);
[[gnu::weak]] void* __interceptor_calloc(std::size_t count, std::size_t size);
[[gnu::weak]] void* __interceptor_realloc(void* memory, std::size_t size);
}

namespace {

namespace fs = std::filesystem;

/// A child that can't be made ready ends with this status, which the program hasn't.
constexpr int kNotReady = 99;
constexpr unsigned kMostSeconds = 10;

long calls;
long failAt;
bool forever;
bool counting;
bool isChild;
long nextFork;  // 0: none
long step;
int tellTo;

/// Gives a descriptor a place in the file that is its own, and not shared with the parent's, and
/// leads it from the parent's folder to the child's.
void reopen(int descriptor, const std::string& from, const std::string& to) {
    struct stat kind;
    if (fstat(descriptor, &kind) != 0 || !S_ISREG(kind.st_mode)) return;
    std::string path = fs::read_symlink("/proc/self/fd/" + std::to_string(descriptor)).string();
    if (path.compare(0, from.size() + 1, from + "/") == 0) path.replace(0, from.size(), to);
    const int flags = fcntl(descriptor, F_GETFL) & (O_ACCMODE | O_APPEND);
    const int own = open(path.c_str(), flags);
    if (own < 0 || lseek(own, lseek(descriptor, 0, SEEK_CUR), SEEK_SET) < 0) _exit(kNotReady);
    dup2(own, descriptor);
    close(own);
}

void redirect(int descriptor, const char* name) {
    const int file = open(name, O_WRONLY | O_CREAT | O_TRUNC, 0600);
    if (file < 0) _exit(kNotReady);
    dup2(file, descriptor);
    close(file);
}

/// Says where the child crashed, and crashes.
void tellCrash(int number) {
    counting = false;
    void* frames[16];
    backtrace_symbols_fd(frames, backtrace(frames, 16), STDERR_FILENO);
    std::signal(number, SIG_DFL);
    kill(getpid(), number);
}

/// Makes the child independent of its parent.
void settle() {
    const std::string from = fs::current_path().string();
    const std::string to = fs::path(from).parent_path() / std::to_string(calls);
    fs::copy(from, to, fs::copy_options::recursive);
    fs::current_path(to);
    std::vector<int> descriptors;
    for (const auto& entry : fs::directory_iterator("/proc/self/fd")) {
        descriptors.push_back(std::stoi(entry.path().filename().string()));
    }
    for (const int descriptor : descriptors) {
        if (descriptor > STDERR_FILENO) reopen(descriptor, from, to);
    }
    redirect(STDOUT_FILENO, "stdout");
    redirect(STDERR_FILENO, "stderr");
    close(tellTo);
    alarm(kMostSeconds);
    if (__interceptor_malloc == nullptr) std::signal(SIGSEGV, tellCrash);
}

void tell(pid_t child) {
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    char line[64];
    const int length = std::snprintf(line, sizeof(line), "%ld %d\n", calls, status);
    if (write(tellTo, line, static_cast<std::size_t>(length)) != length) _exit(kNotReady);
}

/// Answers whether this is the child, whose allocation fails.
bool forkHere() {
    const int former = errno;
    counting = false;
    // Not fork(): the C library would note the child's number in its thread, and locks that are
    // held here would find that another thread holds them.
    const auto child = static_cast<pid_t>(syscall(SYS_clone, SIGCHLD, 0, 0, 0, 0));
    if (child < 0) _exit(kNotReady);
    isChild = child == 0;
    if (isChild) {
        try {
            settle();
        } catch (const std::exception&) {
            _exit(kNotReady);
        }
        nextFork = 0;
        failAt = calls;
    } else {
        tell(child);
        nextFork += step;
    }
    counting = true;
    errno = former;
    return isChild;
}

bool fails() {
    if (!counting) return false;
    ++calls;
    if (calls == nextFork) forkHere();
    if (failAt == 0 || calls < failAt || (calls > failAt && !forever)) return false;
    errno = ENOMEM;
    return true;
}

void report() {
    counting = false;
    const char* path = std::getenv("KZ_MEMORY_REPORT");
    if (path == nullptr || isChild) return;
    char line[32];
    const int length = std::snprintf(line, sizeof(line), "%ld\n", calls);
    const int file = open(path, O_WRONLY | O_CREAT | O_TRUNC, 0600);
    if (file < 0) return;
    if (write(file, line, static_cast<std::size_t>(length)) != length) unlink(path);
    close(file);
}

using Main = int (*)(int, char**, char**);
Main realMain;

int countedMain(int argc, char** argv, char** environment) {
    const char* at = std::getenv("KZ_MEMORY_AT");
    const char* all = std::getenv("KZ_MEMORY_FOREVER");
    const char* each = std::getenv("KZ_MEMORY_EACH");
    failAt = at != nullptr ? std::atol(at) : 0;
    forever = all != nullptr && *all == '1';
    if (each != nullptr) std::sscanf(each, "%ld %ld %d", &nextFork, &step, &tellTo);
    counting = true;
    const int status = realMain(argc, argv, environment);
    report();
    return status;
}

void* allocate(std::size_t size) {
    void* memory = std::malloc(size > 0 ? size : 1);
    if (memory == nullptr) throw std::bad_alloc();
    return memory;
}

}  // namespace

extern "C" {

void* malloc(std::size_t size) {
    if (fails()) return nullptr;
    return __interceptor_malloc != nullptr ? __interceptor_malloc(size) : __libc_malloc(size);
}

void* calloc(std::size_t count, std::size_t size) {
    if (fails()) return nullptr;
    return __interceptor_calloc != nullptr ? __interceptor_calloc(count, size)
                                           : __libc_calloc(count, size);
}

void* realloc(void* memory, std::size_t size) {
    if (fails()) return nullptr;
    return __interceptor_realloc != nullptr ? __interceptor_realloc(memory, size)
                                            : __libc_realloc(memory, size);
}

int __libc_start_main(Main program, int argc, char** argv, void (*init)(), void (*fini)(),
                      void (*loaderFini)(), void* stackEnd) {
    using Start = int (*)(Main, int, char**, void (*)(), void (*)(), void (*)(), void*);
    const auto real = reinterpret_cast<Start>(dlsym(RTLD_NEXT, "__libc_start_main"));
    realMain = program;
    return real(countedMain, argc, argv, init, fini, loaderFini, stackEnd);
}

}  // extern "C"

// The address sanitizer's own would not come by malloc.
void* operator new(std::size_t size) { return allocate(size); }
void* operator new[](std::size_t size) { return allocate(size); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return std::malloc(size > 0 ? size : 1);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    return std::malloc(size > 0 ? size : 1);
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete[](void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete(void* memory, const std::nothrow_t&) noexcept { std::free(memory); }
void operator delete[](void* memory, const std::nothrow_t&) noexcept { std::free(memory); }
