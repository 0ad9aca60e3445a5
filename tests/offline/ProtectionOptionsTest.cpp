#include <gtest/gtest.h>

#include "offline/OfflineException.h"
#include "offline/OptionFixture.h"

namespace torvo::offline {
namespace {

const std::vector<std::string> kAll = {"--license-server-url=u",  "--transport-cert=t",
                                       "--license-server-cert=l", "--packager-credential=p",
                                       "--credential-pwd=w",      "--policy-file=f",
                                       "--common-key=k",          "--content-id=c"};

std::string messageFor(const std::vector<std::string>& arguments) {
    try {
        parsed(arguments);
        return "passes";
    } catch (const EncryptionInfoException& failure) {
        EXPECT_EQ(failure.code(), 10);
        const std::string prefix = "Not enough information given for encryption: ";
        EXPECT_EQ(failure.text().rfind(prefix, 0), 0U);
        return failure.text().substr(prefix.size());
    }
}

TEST(ProtectionOptionsTest, TheWholeSetAndNoneOfItPass) {
    EXPECT_EQ(messageFor(kAll), "passes");
    EXPECT_EQ(messageFor({}), "passes");
}

TEST(ProtectionOptionsTest, EachMissingOptionHasItsMessage) {
    const char* messages[] = {"no license server URL specified",
                              "no transport certificate specified",
                              "no license server certificate specified",
                              "no packager credential specified",
                              "no packager credential password specified",
                              "no policy specified",
                              "no common key specified",
                              "no content ID specified"};
    for (std::size_t missing = 1; missing < kAll.size(); ++missing) {
        std::vector<std::string> arguments = kAll;
        arguments.erase(arguments.begin() + static_cast<std::ptrdiff_t>(missing));
        EXPECT_EQ(messageFor(arguments), messages[missing]);
    }
}

TEST(ProtectionOptionsTest, ASetIsReadFromTheFrontOnly) {
    // Without its first option the rest has no empty one behind it.
    EXPECT_EQ(messageFor({kAll.begin() + 1, kAll.end()}), "passes");
    EXPECT_EQ(messageFor({"--content-id=c"}), "passes");
    EXPECT_EQ(messageFor({"--common-key=k", "--content-id=c"}), "passes");
    EXPECT_EQ(messageFor({"--common-key=k"}), "no license server URL specified");
    EXPECT_EQ(messageFor({"--license-server-url=u"}), "no transport certificate specified");
}

TEST(ProtectionOptionsTest, AnUpdateNeedsTheWholeSet) {
    EXPECT_EQ(messageFor({"--update-drm-info"}), "no license server URL specified");
    EXPECT_EQ(messageFor({"--update-drm-info", "--common-key=k", "--content-id=c"}),
              "no license server URL specified");
    std::vector<std::string> arguments = kAll;
    arguments.emplace_back("--update-drm-info");
    EXPECT_EQ(messageFor(arguments), "passes");
}

}  // namespace
}  // namespace torvo::offline
