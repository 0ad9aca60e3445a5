#include "offline/Progress.h"

#include <algorithm>
#include <csignal>
#include <iomanip>
#include <iostream>
#include <locale>
#include <signal.h>
#include <sstream>

namespace torvo::offline {
namespace {

volatile std::sig_atomic_t isProgressWanted = 0;

extern "C" void rememberRequest(int) { isProgressWanted = 1; }

void listenTo(int signalNumber) {
    struct sigaction action {};
    action.sa_handler = rememberRequest;
    sigemptyset(&action.sa_mask);
    // What it interrupts goes on by itself.
    action.sa_flags = SA_RESTART;
    sigaction(signalNumber, &action, nullptr);
}

}  // namespace

std::string progressLine(const Progress& progress) {
    std::ostringstream out;
    out.imbue(std::locale::classic());
    out << std::fixed << std::setprecision(1);
    out << progress.bytesRead << " bytes read, " << progress.mediaSeconds << " s";
    if (progress.wholeSeconds > 0.0) out << " of " << progress.wholeSeconds << " s";
    out << ", fragments: " << progress.fragments << ", segments: " << progress.segments;
    const double elapsed = std::max(progress.elapsedSeconds, 0.001);
    out << ", " << static_cast<double>(progress.bytesRead) / 1e6 / elapsed << " MB/s";
    if (progress.wholeSeconds > 0.0 && progress.mediaSeconds > 0.0) {
        const double left = std::max(progress.wholeSeconds - progress.mediaSeconds, 0.0);
        out << ", " << elapsed * left / progress.mediaSeconds << " s left";
    }
    return out.str();
}

void listenForProgressRequests() {
    listenTo(SIGUSR1);
#ifdef SIGINFO
    listenTo(SIGINFO);
#endif
}

bool takeProgressRequest() {
    if (isProgressWanted == 0) return false;
    isProgressWanted = 0;
    return true;
}

void printProgress(const Progress& progress) {
    std::cerr << progressLine(progress) + "\n" << std::flush;
    std::cerr.clear();
}

}  // namespace torvo::offline
