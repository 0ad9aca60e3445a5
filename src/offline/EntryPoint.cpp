#include <csignal>
#include <string>
#include <vector>

#include "offline/Driver.h"
#include "offline/Progress.h"

/// The arguments are taken for UTF-8 as they are; none is checked or left out.
int main(int argc, char** argv) {
    // A closed pipe and a file size limit then fail the write, and the job ends with its error
    // line instead of dying in silence.
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    torvo::offline::listenForProgressRequests();

    std::vector<std::string> arguments;
    for (int i = 1; i < argc; ++i) arguments.emplace_back(argv[i]);
    torvo::offline::OptionMap options;
    return torvo::offline::main(options, arguments);
}
