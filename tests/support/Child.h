#pragma once

#include <functional>

namespace kz::test {

/// Runs `body` in a child process, for what a process does only once. Answers whether it ended
/// without a failed expectation, an exception or a signal; failures are printed as usual.
bool passesInChild(const std::function<void()>& body);

}  // namespace kz::test
