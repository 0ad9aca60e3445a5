#include <csignal>

#include <gtest/gtest.h>

#include "offline/Progress.h"

namespace torvo::offline {
namespace {

TEST(ProgressTest, TellsBytesTimeFragmentsSpeedAndWhatIsLeft) {
    Progress progress;
    progress.bytesRead = 30000000;
    progress.mediaSeconds = 15.0;
    progress.wholeSeconds = 60.0;
    progress.fragments = 3;
    progress.segments = 2;
    progress.elapsedSeconds = 2.0;
    // 30 MB in 2 s; 15 s of media took 2 s, so the 45 s behind them take 6.
    EXPECT_EQ(progressLine(progress),
              "30000000 bytes read, 15.0 s of 60.0 s, fragments: 3, segments: 2, 15.0 MB/s, "
              "6.0 s left");
}

TEST(ProgressTest, LeavesOutWhatItCanNotKnowWithoutADuration) {
    Progress progress;
    progress.bytesRead = 1000000;
    progress.mediaSeconds = 1.0;
    progress.elapsedSeconds = 1.0;
    EXPECT_EQ(progressLine(progress),
              "1000000 bytes read, 1.0 s, fragments: 0, segments: 0, 1.0 MB/s");
}

TEST(ProgressTest, TellsNoTimeThatIsLeftBeforeTheFirstSample) {
    Progress progress;
    progress.wholeSeconds = 60.0;
    progress.elapsedSeconds = 1.0;
    EXPECT_EQ(progressLine(progress),
              "0 bytes read, 0.0 s of 60.0 s, fragments: 0, segments: 0, 0.0 MB/s");
}

TEST(ProgressTest, NothingIsLeftBehindTheEnd) {
    Progress progress;
    progress.mediaSeconds = 61.0;
    progress.wholeSeconds = 60.0;
    progress.elapsedSeconds = 1.0;
    EXPECT_EQ(progressLine(progress),
              "0 bytes read, 61.0 s of 60.0 s, fragments: 0, segments: 0, 0.0 MB/s, 0.0 s left");
}

TEST(ProgressTest, ManySignalsAreOneRequest) {
    listenForProgressRequests();
    EXPECT_FALSE(takeProgressRequest());
    std::raise(SIGUSR1);
    std::raise(SIGUSR1);
    EXPECT_TRUE(takeProgressRequest());
    EXPECT_FALSE(takeProgressRequest());
    std::signal(SIGUSR1, SIG_DFL);
}

}  // namespace
}  // namespace torvo::offline
