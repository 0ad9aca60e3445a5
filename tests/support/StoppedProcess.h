#pragma once

#include <string>
#include <sys/types.h>
#include <vector>

#include "support/Bytes.h"

namespace kz::test {

/// A program that was stopped right before its first write to a file of a certain kind, so that its
/// memory can be looked into. It is killed at the end.
class StoppedProcess {
public:
    /// Runs argv[0] with argv until it is about to write to a file whose name ends in `suffix`.
    /// Throws std::runtime_error when it ends before, or can't be followed.
    StoppedProcess(const std::vector<std::string>& argv, const std::string& suffix);
    ~StoppedProcess();
    StoppedProcess(const StoppedProcess&) = delete;
    StoppedProcess& operator=(const StoppedProcess&) = delete;

    /// The words of the command line as the system shows it, each with a zero behind it.
    std::string commandLine() const;
    /// All memory that the process can write to, mapping by mapping: data, heap, stack, in use or
    /// given back. The address space that a sanitizer reserves is left out.
    std::vector<Bytes> writableMemory() const;

private:
    void runUntilWrite(const std::string& suffix);
    bool isAboutToWrite(const std::string& suffix) const;

    pid_t child_;
};

}  // namespace kz::test
