#include "support/Process.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <stdexcept>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace kz::test {
namespace {

struct Pipe {
    Pipe() {
        if (pipe2(ends, O_CLOEXEC) != 0) throw std::runtime_error("pipe failed");
    }
    ~Pipe() {
        closeEnd(0);
        closeEnd(1);
    }
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;

    void closeEnd(int index) {
        if (ends[index] >= 0) close(ends[index]);
        ends[index] = -1;
    }

    int ends[2] = {-1, -1};  // for reading, for writing
};

struct Pipes {
    Pipe in;
    Pipe out;
    Pipe err;
};

/// Between fork and exec: makes the descriptors 0 to 2.
void arrangeDescriptors(const ProcessSettings& settings, Pipes& pipes) {
    dup2(pipes.in.ends[0], 0);
    if (settings.closeStandardOutput) {
        close(1);
    } else if (!settings.standardOutputFile.empty()) {
        const int file =
            open(settings.standardOutputFile.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0666);
        if (file < 0) _exit(126);
        dup2(file, 1);
        close(file);
    } else {
        dup2(pipes.out.ends[1], 1);
    }
    if (settings.closeStandardError) {
        close(2);
    } else {
        dup2(pipes.err.ends[1], 2);
    }
}

[[noreturn]] void becomeProgram(const std::vector<std::string>& argv,
                                const ProcessSettings& settings, Pipes& pipes) {
    arrangeDescriptors(settings, pipes);
    if (!settings.workingDirectory.empty() && chdir(settings.workingDirectory.c_str()) != 0) {
        _exit(126);
    }
    if (settings.fileSizeLimit != 0) {
        const rlimit limit{settings.fileSizeLimit, settings.fileSizeLimit};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    for (const auto& [name, value] : settings.environment) setenv(name.c_str(), value.c_str(), 1);
    std::vector<char*> words;
    for (const std::string& word : argv) words.push_back(const_cast<char*>(word.c_str()));
    words.push_back(nullptr);
    execvp(words[0], words.data());
    _exit(127);
}

/// Takes what is there; answers false at the end.
bool readSome(int descriptor, std::string& text) {
    char block[65536];
    const ssize_t count = read(descriptor, block, sizeof(block));
    if (count > 0) text.append(block, static_cast<std::size_t>(count));
    return count > 0 || (count < 0 && errno == EINTR);
}

/// Feeds and drains the process until both of its outputs are at their end.
void exchange(Pipes& pipes, const ProcessSettings& settings, pid_t child, ProcessResult& result) {
    const auto deadline = std::chrono::steady_clock::now() + settings.timeout;
    std::size_t fed = 0;
    while (pipes.out.ends[0] >= 0 || pipes.err.ends[0] >= 0) {
        if (fed == settings.standardInput.size()) pipes.in.closeEnd(1);
        pollfd waits[] = {{pipes.out.ends[0], POLLIN, 0},
                          {pipes.err.ends[0], POLLIN, 0},
                          {pipes.in.ends[1], POLLOUT, 0}};
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
            deadline - std::chrono::steady_clock::now());
        if (left.count() <= 0) {
            result.timedOut = true;
            kill(child, SIGKILL);
            return;
        }
        if (poll(waits, 3, static_cast<int>(left.count())) <= 0) continue;
        if (waits[0].revents != 0 && !readSome(pipes.out.ends[0], result.out)) {
            pipes.out.closeEnd(0);
        }
        if (waits[1].revents != 0 && !readSome(pipes.err.ends[0], result.err)) {
            pipes.err.closeEnd(0);
        }
        if (waits[2].revents != 0) {
            const ssize_t count = write(pipes.in.ends[1], settings.standardInput.data() + fed,
                                        settings.standardInput.size() - fed);
            fed = count < 0 ? settings.standardInput.size() : fed + static_cast<std::size_t>(count);
        }
    }
}

}  // namespace

ProcessResult run(const std::vector<std::string>& argv, const ProcessSettings& settings) {
    std::signal(SIGPIPE, SIG_IGN);  // a process that doesn't read its input isn't our end
    Pipes pipes;
    if (settings.breakStandardOutput) pipes.out.closeEnd(0);
    const pid_t child = fork();
    if (child < 0) throw std::runtime_error("fork failed");
    if (child == 0) {
        std::signal(SIGPIPE, SIG_DFL);
        becomeProgram(argv, settings, pipes);
    }
    pipes.in.closeEnd(0);
    pipes.out.closeEnd(1);
    pipes.err.closeEnd(1);

    ProcessResult result;
    exchange(pipes, settings, child, result);
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    if (WIFEXITED(status)) result.status = WEXITSTATUS(status);
    if (WIFSIGNALED(status)) result.signal = WTERMSIG(status);
    return result;
}

}  // namespace kz::test
