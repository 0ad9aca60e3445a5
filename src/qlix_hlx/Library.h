#pragma once

namespace qlix::hlx {

/// Counts a start of the library; the first one keeps the process from writing core files.
void start();
/// Counts a stop; the last one wipes the secrets of all live handles. Throws Failure without a
/// start.
void stop();
/// Throws Failure unless the library is started.
void requireStarted();

}  // namespace qlix::hlx
