#include "support/StoppedProcess.h"

#include <csignal>
#include <cstdint>
#include <fcntl.h>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace kz::test {
namespace {

constexpr std::size_t kLargestMapping = std::size_t{1} << 30;

std::string procFile(pid_t process, const std::string& name) {
    return "/proc/" + std::to_string(process) + "/" + name;
}

std::string targetOf(const std::string& link) {
    char target[4096];
    const ssize_t size = readlink(link.c_str(), target, sizeof(target));
    return size < 0 ? "" : std::string(target, static_cast<std::size_t>(size));
}

bool isWrite(std::uint64_t call) {
    for (const long write : {SYS_write, SYS_writev, SYS_pwrite64, SYS_pwritev, SYS_pwritev2}) {
        if (call == static_cast<std::uint64_t>(write)) return true;
    }
    return false;
}

[[noreturn]] void becomeTraced(const std::vector<std::string>& argv) {
    std::vector<char*> words;
    for (const std::string& word : argv) words.push_back(const_cast<char*>(word.c_str()));
    words.push_back(nullptr);
    if (ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) == 0) execvp(words[0], words.data());
    _exit(127);
}

/// Waits for the next stop; throws when there is none any more.
int nextStop(pid_t child) {
    int status = 0;
    if (waitpid(child, &status, 0) != child || !WIFSTOPPED(status)) {
        throw std::runtime_error("the process ended before its write, or can't be traced");
    }
    return WSTOPSIG(status);
}

Bytes readMemory(int memory, std::uint64_t begin, std::uint64_t end) {
    Bytes bytes(static_cast<std::size_t>(end - begin));
    std::size_t size = 0;
    while (size < bytes.size()) {
        const ssize_t count = pread(memory, bytes.data() + size, bytes.size() - size,
                                    static_cast<off_t>(begin + size));
        if (count <= 0) break;
        size += static_cast<std::size_t>(count);
    }
    bytes.resize(size);
    return bytes;
}

}  // namespace

StoppedProcess::StoppedProcess(const std::vector<std::string>& argv, const std::string& suffix)
    : child_(fork()) {
    if (child_ < 0) throw std::runtime_error("fork failed");
    if (child_ == 0) becomeTraced(argv);
    try {
        runUntilWrite(suffix);
    } catch (...) {
        kill(child_, SIGKILL);
        waitpid(child_, nullptr, 0);
        throw;
    }
}

StoppedProcess::~StoppedProcess() {
    kill(child_, SIGKILL);
    waitpid(child_, nullptr, 0);
}

void StoppedProcess::runUntilWrite(const std::string& suffix) {
    constexpr int kCallStop = SIGTRAP | 0x80;
    nextStop(child_);
    ptrace(PTRACE_SETOPTIONS, child_, nullptr, PTRACE_O_TRACESYSGOOD | PTRACE_O_EXITKILL);
    int signal = 0;
    for (;;) {
        if (ptrace(PTRACE_SYSCALL, child_, nullptr, signal) != 0) {
            throw std::runtime_error("the process can't be traced");
        }
        signal = nextStop(child_);
        if (signal != kCallStop) continue;
        signal = 0;
        if (isAboutToWrite(suffix)) return;
    }
}

bool StoppedProcess::isAboutToWrite(const std::string& suffix) const {
    __ptrace_syscall_info call{};
    ptrace(PTRACE_GET_SYSCALL_INFO, child_, sizeof(call), &call);
    if (call.op != PTRACE_SYSCALL_INFO_ENTRY || !isWrite(call.entry.nr)) return false;
    const std::string name = targetOf(procFile(child_, "fd/" + std::to_string(call.entry.args[0])));
    return name.size() >= suffix.size() &&
           name.compare(name.size() - suffix.size(), suffix.size(), suffix) == 0;
}

std::string StoppedProcess::commandLine() const {
    std::ifstream file(procFile(child_, "cmdline"), std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), {});
}

std::vector<Bytes> StoppedProcess::writableMemory() const {
    const int memory = open(procFile(child_, "mem").c_str(), O_RDONLY | O_CLOEXEC);
    if (memory < 0) throw std::runtime_error("the memory of the process can't be read");
    std::vector<Bytes> all;
    std::ifstream maps(procFile(child_, "maps"));
    for (std::string line; std::getline(maps, line);) {
        std::istringstream words(line);
        std::uint64_t begin = 0;
        std::uint64_t end = 0;
        char dash = 0;
        std::string rights;
        words >> std::hex >> begin >> dash >> end >> rights;
        if (rights.size() < 2 || rights[1] != 'w' || end - begin > kLargestMapping) continue;
        all.push_back(readMemory(memory, begin, end));
    }
    close(memory);
    return all;
}

}  // namespace kz::test
