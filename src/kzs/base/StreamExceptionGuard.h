#pragma once

#include <ios>

namespace torvo::kzs {

/// Sets for which states a stream throws, and puts the former setting back when it goes.
///
/// States of the former setting that are up by then are cleared: putting it back would throw.
class StreamExceptionGuard {
public:
    /// Throws std::ios_base::failure, with the former setting in force, where one of the states is
    /// up already.
    StreamExceptionGuard(std::ios& stream, std::ios::iostate exceptions);
    ~StreamExceptionGuard();
    StreamExceptionGuard(const StreamExceptionGuard&) = delete;
    StreamExceptionGuard& operator=(const StreamExceptionGuard&) = delete;

private:
    std::ios& stream_;  // outlives the guard
    std::ios::iostate former_;
};

}  // namespace torvo::kzs
