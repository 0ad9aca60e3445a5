#pragma once

#include <chrono>
#include <string>
#include <utility>
#include <vector>

namespace kz::test {

/// How a process is started.
struct ProcessSettings {
    /// Added to the environment of the test.
    std::vector<std::pair<std::string, std::string>> environment;
    std::string workingDirectory;      ///< empty: that of the test
    std::string standardInput;         ///< what the process can read, then the end of the file
    std::string standardOutputFile;    ///< opened for writing in the place of the pipe
    bool breakStandardOutput = false;  ///< a pipe that nobody reads
    bool closeStandardOutput = false;  ///< no descriptor 1 at all
    bool closeStandardError = false;
    /// Largest size in bytes of a file that it may write; 0: no limit.
    unsigned long fileSizeLimit = 0;
    std::chrono::seconds timeout{60};
};

struct ProcessResult {
    int status = -1;  ///< exit status; -1 when a signal ended it
    int signal = 0;
    bool timedOut = false;  ///< it was killed for taking too long
    std::string out;
    std::string err;
};

/// Runs the program argv[0] with argv to its end. Throws std::runtime_error when that can't be
/// started at all; a program that isn't there gives status 127.
ProcessResult run(const std::vector<std::string>& argv, const ProcessSettings& settings = {});

}  // namespace kz::test
