#include "support/Child.h"

#include <cstdio>
#include <exception>
#include <iostream>
#include <stdexcept>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#ifdef KZ_COVERAGE
extern "C" void __gcov_dump(void);
#endif

namespace kz::test {
namespace {

/// Ends the child without what the parent's end will do. Coverage counts are written by hand then.
[[noreturn]] void leave(int status) {
    std::fflush(nullptr);
    std::cout.flush();
#ifdef KZ_COVERAGE
    __gcov_dump();
#endif
    _exit(status);
}

int statusOf(const std::function<void()>& body) {
    try {
        body();
    } catch (const std::exception& failure) {
        std::cout << "in the child: " << failure.what() << std::endl;
        return 1;
    } catch (...) {
        std::cout << "in the child: an exception of no standard class" << std::endl;
        return 1;
    }
    return ::testing::Test::HasFailure() ? 1 : 0;
}

}  // namespace

bool passesInChild(const std::function<void()>& body) {
    std::fflush(nullptr);
    std::cout.flush();
    const pid_t child = fork();
    if (child < 0) throw std::runtime_error("fork failed");
    if (child == 0) leave(statusOf(body));
    int status = 0;
    if (waitpid(child, &status, 0) != child) throw std::runtime_error("waitpid failed");
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

}  // namespace kz::test
