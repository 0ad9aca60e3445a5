#include <csignal>
#include <cstring>
#include <new>
#include <string>
#include <unistd.h>
#include <utility>
#include <vector>

#include "offline/Driver.h"
#include "offline/Progress.h"
#include "offline/Secrets.h"

namespace {

constexpr int kOutOfMemory = 12;

/// The error line of a job that has no memory, not even for making up that line. Where standard
/// error is closed, the status alone must tell.
void tellOutOfMemory() noexcept {
    constexpr const char* kLine = "Error 12: Standard Exception: std::bad_alloc\n";
    [[maybe_unused]] const ssize_t written = ::write(STDERR_FILENO, kLine, std::strlen(kLine));
}

}  // namespace

/// The arguments are taken for UTF-8 as they are; none is checked or left out.
int main(int argc, char** argv) {
    // A closed pipe and a file size limit then fail the write, and the job ends with its error
    // line instead of dying in silence.
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    torvo::offline::listenForProgressRequests();

    try {
        std::vector<std::string> arguments;
        for (int i = 1; i < argc; ++i) arguments.emplace_back(argv[i]);
        torvo::offline::hidePassword(argc, argv);
        torvo::offline::OptionMap options;
        return torvo::offline::main(options, std::move(arguments));
    } catch (const std::bad_alloc&) {
        // Only this one: what the driver doesn't know is a mistake of its own and ends as such.
        tellOutOfMemory();
        return kOutOfMemory;
    }
}
