#include <gtest/gtest.h>

#include "support/Process.h"
#include "support/TempDir.h"

namespace kz::test {
namespace {

TEST(ProcessTest, GivesStatusOutputAndErrorText) {
    const ProcessResult result = run({"sh", "-c", "echo out; echo err >&2; exit 7"});
    EXPECT_EQ(result.status, 7);
    EXPECT_EQ(result.out, "out\n");
    EXPECT_EQ(result.err, "err\n");
}

TEST(ProcessTest, PassesInputEnvironmentAndFolder) {
    const TempDir folder;
    ProcessSettings settings;
    settings.workingDirectory = folder.path();
    settings.environment = {{"KZ_WORD", "word"}};
    settings.standardInput = std::string(200000, 'x');
    const ProcessResult result = run({"sh", "-c", "pwd; echo $KZ_WORD; wc -c"}, settings);
    EXPECT_EQ(result.out, folder.path() + "\nword\n200000\n");
}

TEST(ProcessTest, TellsASignalFromAnExit) {
    const ProcessResult result = run({"sh", "-c", "kill -TERM $$"});
    EXPECT_EQ(result.status, -1);
    EXPECT_EQ(result.signal, 15);
}

TEST(ProcessTest, EndsAProcessThatTakesTooLong) {
    ProcessSettings settings;
    settings.timeout = std::chrono::seconds(1);
    const ProcessResult result = run({"sleep", "30"}, settings);
    EXPECT_TRUE(result.timedOut);
    EXPECT_EQ(result.signal, 9);
}

TEST(ProcessTest, AProgramThatIsNotThereGives127) {
    EXPECT_EQ(run({"kz-no-such-program"}).status, 127);
}

}  // namespace
}  // namespace kz::test
