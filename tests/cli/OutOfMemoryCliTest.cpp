#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "cli/CommandLine.h"
#include "support/TempDir.h"

namespace kz::test {
namespace {

// Sanitizers bring allocation functions of their own, in front of which no object can be loaded.
#ifdef KZ_MEMORY_FAULT

constexpr const char* kClip = "--input-file=" KZ_TEST_DATA_DIR "/media/short_3s.flv";

/// The clip's run with the n-th allocation failing.
ProcessResult packagerWithout(const std::string& out, int allocation, bool andAllLaterOnes) {
    ProcessSettings settings;
    settings.environment = {{"LD_PRELOAD", KZ_MEMORY_FAULT},
                            {"KZ_MEMORY_AT", std::to_string(allocation)},
                            {"KZ_MEMORY_FOREVER", andAllLaterOnes ? "1" : "0"},
                            {"SOURCE_DATE_EPOCH", "1700000000"}};
    return packager({kClip, "--output-path=" + out}, settings);
}

constexpr const char* kLine = "Error 12: Standard Exception: std::bad_alloc\n";

TEST(OutOfMemoryCliTest, EndsInOneLineWhileTheArgumentsAreRead) {
    const TempDir folder;
    for (int allocation = 1; allocation < 60; ++allocation) {
        const ProcessResult result = packagerWithout(folder / "out", allocation, false);
        EXPECT_EQ(result.status, 12) << allocation;
        EXPECT_EQ(result.err, kLine) << allocation;
    }
}

TEST(OutOfMemoryCliTest, NoOptionLosesItsNameForLackOfMemory) {
    const TempDir folder;
    for (int allocation = 210; allocation < 300; ++allocation) {
        const ProcessResult result = packagerWithout(folder / "out", allocation, false);
        EXPECT_EQ(result.signal, 0) << allocation;
        EXPECT_TRUE(result.status == 12 || result.status == 0) << allocation;
    }
}

TEST(OutOfMemoryCliTest, EndsInOneLineWhereThereIsNoMoreMemoryForIt) {
    const TempDir folder;
    for (int allocation = 1; allocation < 2000; allocation += 71) {
        const ProcessResult result = packagerWithout(folder / "out", allocation, true);
        EXPECT_NE(result.status, 0) << allocation;
        EXPECT_EQ(result.signal, 0) << allocation;
    }
}

TEST(OutOfMemoryCliTest, TheLastAllocationsLeaveAWholeManifestOrNone) {
    const TempDir folder;
    ProcessSettings counting;
    counting.environment = {{"LD_PRELOAD", KZ_MEMORY_FAULT},
                            {"KZ_MEMORY_REPORT", folder / "count"},
                            {"SOURCE_DATE_EPOCH", "1700000000"}};
    ASSERT_EQ(packager({kClip, "--output-path=" + folder / "whole"}, counting).status, 0);
    const Bytes whole = readFile(folder / "whole/short_3s.kzd");
    const Bytes count = readFile(folder / "count");
    const int last = std::stoi(std::string(count.begin(), count.end()));
    ASSERT_GT(last, 100);
    for (int allocation = last - 60; allocation <= last; ++allocation) {
        const std::string out = folder / std::to_string(allocation);
        const ProcessResult result = packagerWithout(out, allocation, false);
        ASSERT_EQ(fileExists(out + "/short_3s.kzd"), result.status == 0) << allocation;
        if (result.status != 0) continue;
        EXPECT_EQ(readFile(out + "/short_3s.kzd"), whole) << allocation;
    }
}

#endif

}  // namespace
}  // namespace kz::test
