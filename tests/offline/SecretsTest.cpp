#include <algorithm>
#include <array>
#include <cstdint>
#include <fcntl.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "offline/OptionFixture.h"
#include "offline/Secrets.h"

namespace torvo::offline {
namespace {

/// The words as the system shows them once the password is hidden.
std::vector<std::string> shown(std::vector<std::string> words) {
    words.insert(words.begin(), "kzspackager");
    std::vector<char*> argv;
    for (std::string& word : words) argv.push_back(word.data());
    hidePassword(static_cast<int>(argv.size()), argv.data());
    words.erase(words.begin());
    return words;
}

TEST(SecretsTest, ThePasswordIsHiddenBehindTheSignAndInTheNextWord) {
    using Words = std::vector<std::string>;
    EXPECT_EQ(shown({"--credential-pwd=abc", "--content-id=abc"}),
              (Words{"--credential-pwd=***", "--content-id=abc"}));
    EXPECT_EQ(shown({"--credential-pwd", "abc", "--content-id", "abc"}),
              (Words{"--credential-pwd", "***", "--content-id", "abc"}));
    EXPECT_EQ(shown({"--credential-pwd=a=b"}), (Words{"--credential-pwd=***"}));
    EXPECT_EQ(shown({"--credential-pwd", "--help"}), (Words{"--credential-pwd", "******"}));
    EXPECT_EQ(shown({"--credential-pwd="}), (Words{"--credential-pwd="}));
    EXPECT_EQ(shown({"--credential-pwd"}), (Words{"--credential-pwd"}));
}

// As much of the name as the option parser makes do with.
TEST(SecretsTest, ABeginningOfTheOptionHidesItsValueToo) {
    using Words = std::vector<std::string>;
    EXPECT_EQ(shown({"--cr=abc"}), (Words{"--cr=***"}));
    EXPECT_EQ(shown({"--credential", "abc"}), (Words{"--credential", "***"}));
    const Words others = {"--credential-pwds=abc", "--conf-file=abc", "--=abc", "--", "-cr=abc",
                          "credential-pwd=abc"};
    EXPECT_EQ(shown(others), others);
}

TEST(SecretsTest, AWipedTextIsZeroInAllItsRoom) {
    std::string text = "the quick brown fox jumps over the lazy dog";
    const char* const bytes = text.data();
    const std::size_t room = text.capacity();
    wipe(text);
    EXPECT_TRUE(text.empty());
    ASSERT_EQ(text.data(), bytes);
    ASSERT_EQ(text.capacity(), room);
    text.resize(room, 'x');
    wipe(text);
    EXPECT_TRUE(std::all_of(bytes, bytes + room, [](char c) { return c == '\0'; }));

    std::vector<std::string> words = {"a", "b"};
    wipe(words);
    EXPECT_TRUE(words.empty());
}

TEST(SecretsTest, OfTheSettingsOnlyThePasswordIsWiped) {
    OptionMap options =
        defaultsWith({{"credential-pwd", std::string("abc")}, {"content-id", std::string("abc")}});
    wipePassword(options);
    EXPECT_EQ(textOf(options, "credential-pwd"), "");
    EXPECT_EQ(textOf(options, "content-id"), "abc");
}

constexpr std::uint64_t kMark = 0x4B65737472656C21;
constexpr std::size_t kMarks = 2048;

/// Leaves marks on the stack and tells where.
[[gnu::noinline]] std::uintptr_t leaveMarks() {
    volatile std::uint64_t marks[kMarks];
    for (volatile std::uint64_t& mark : marks) mark = kMark;
    return reinterpret_cast<std::uintptr_t>(&marks[0]);
}

/// How many marks are still there. The system reads them: they are nobody's any more.
std::ptrdiff_t marksAt(std::uintptr_t place) {
    static std::array<std::uint64_t, kMarks> found;
    const int memory = open("/proc/self/mem", O_RDONLY | O_CLOEXEC);
    EXPECT_EQ(pread(memory, found.data(), sizeof(found), static_cast<off_t>(place)),
              static_cast<ssize_t>(sizeof(found)));
    close(memory);
    return std::count(found.begin(), found.end(), kMark);
}

TEST(SecretsTest, AWipedStackHasNothingOfTheFunctionsThatWereCalled) {
    EXPECT_GT(marksAt(leaveMarks()), 0);
    const std::uintptr_t place = leaveMarks();
    wipeStack();
    EXPECT_EQ(marksAt(place), 0);
}

}  // namespace
}  // namespace torvo::offline
