#pragma once

#include <chrono>
#include <cstdint>
#include <string>

namespace torvo::offline {

/// How far a packaging run is.
struct Progress {
    std::uint64_t bytesRead = 0;  ///< of samples
    double mediaSeconds = 0.0;    ///< time of the last sample
    double wholeSeconds = 0.0;    ///< of the recording; 0 when it isn't known
    std::uint64_t fragments = 0;  ///< written
    std::uint32_t segments = 0;   ///< begun
    double elapsedSeconds = 0.0;
};

/// One line without its end: bytes read, media time of the whole, fragments and segments written,
/// speed, time left (when the whole is known and something has been read).
std::string progressLine(const Progress& progress);

/// From now on SIGUSR1 (and SIGINFO where there is one) asks a run for its progress instead of
/// ending the process. To be called once, at the start.
void listenForProgressRequests();

/// True once for all requests since the last call. Costs a test of one flag.
bool takeProgressRequest();

/// Writes the line to standard error. That it can't be written is no failure of the run.
void printProgress(const Progress& progress);

}  // namespace torvo::offline
