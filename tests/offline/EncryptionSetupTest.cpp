#include <algorithm>
#include <limits>
#include <memory>

#include <gtest/gtest.h>

#include "hlx/HLXException.h"
#include "hlx/HLXLibrary.h"
#include "kzs/Base64.h"
#include "offline/EncryptionSetup.h"
#include "offline/OfflineException.h"
#include "offline/ProtectionInputs.h"
#include "support/Child.h"

namespace torvo::offline {
namespace {

using kz::test::Bytes;
using kz::test::CertificateSpec;
using kz::test::KeyKind;
using kz::test::OpenedMetadata;
using kz::test::passesInChild;

/// A setup with what it needs around it. One a process: the handles are made once.
struct Job {
    explicit Job(const OptionMap& options) {
        hlx::startLibrary();
        setup = std::make_unique<EncryptionSetup>(options, context);
    }
    kzspkgutil::RefCountedMemoryArena arena;
    kzspkgutil::PackagerContext context{arena};
    std::unique_ptr<EncryptionSetup> setup;
};

OpenedMetadata opened(const Job& job, const ProtectionInputs& inputs) {
    const auto& metadata = job.setup->metadata();
    return kz::test::openMetadata(kz::test::bytesOf(metadata.data(), metadata.size()),
                                  ProtectionInputs::serverKey(), inputs.serverDer);
}

/// How a setup fails: "11 (library 33)", or code and text of an OfflineException.
std::string failureOf(const OptionMap& options) {
    try {
        Job job(options);
        return "none";
    } catch (const OfflineException& failure) {
        return std::to_string(failure.code()) + ": " + failure.text();
    } catch (const hlx::HLXException& failure) {
        return "library " + std::to_string(failure.code());
    }
}

void expectFailure(const OptionMap& options, const std::string& failure) {
    EXPECT_TRUE(passesInChild([&] { EXPECT_EQ(failureOf(options), failure); }));
}

std::string libraryCode(std::uint32_t code) { return "library " + std::to_string(code); }

TEST(EncryptionSetupTest, MakesMetadataPolicyAndHeader) {
    EXPECT_TRUE(passesInChild([] {
        const ProtectionInputs inputs;
        const Job job(inputs.options());
        const OpenedMetadata record = opened(job, inputs);
        EXPECT_EQ(record.contentId, "movie7");
        EXPECT_EQ(record.serverUrl, "https://license.example/");
        EXPECT_EQ(record.transportFingerprint, kz::test::sha256(inputs.transportDer));
        EXPECT_EQ(record.policies, std::vector<Bytes>{kz::test::text("<policy/>")});
        EXPECT_EQ(record.flags, (std::vector<unsigned long>{1, 1, 1, 2, 0}));
        EXPECT_EQ(job.setup->policy().metadata(), job.setup->metadata());
        EXPECT_EQ(job.setup->policy().makeProtectionBox(0)[68], 2);

        const std::string text = kzs::base64Encode(job.setup->metadata());
        const auto& header = job.setup->additionalHeader();
        EXPECT_NE(std::search(header.begin(), header.end(), text.begin(), text.end()),
                  header.end());
    }));
}

TEST(EncryptionSetupTest, NothingIsWrittenByIt) {
    EXPECT_TRUE(passesInChild([] {
        const ProtectionInputs inputs;
        const Job job(inputs.options());
        EXPECT_FALSE(kz::test::fileExists(inputs.folder / "out"));
    }));
}

TEST(EncryptionSetupTest, FlagsAreVideoAudioDataLevelAndClearStart) {
    EXPECT_TRUE(passesInChild([] {
        const ProtectionInputs inputs;
        OptionMap options = inputs.options();
        options["encrypt-video"] = false;
        options["encrypt-data"] = false;
        options["ms-unencrypted"] = 1500.9;
        options["video-encrypt-level"] = 1.9;
        EXPECT_EQ(opened(Job(options), inputs).flags,
                  (std::vector<unsigned long>{0, 1, 0, 1, 1500}));
    }));
}

TEST(EncryptionSetupTest, ItRunsInFullWhenNothingIsToBeEncrypted) {
    EXPECT_TRUE(passesInChild([] {
        const ProtectionInputs inputs;
        OptionMap options = inputs.options();
        options["encrypt-video"] = false;
        options["encrypt-audio"] = false;
        options["encrypt-data"] = false;
        EXPECT_EQ(opened(Job(options), inputs).flags, (std::vector<unsigned long>{0, 0, 0, 2, 0}));
    }));
}

TEST(EncryptionSetupTest, LevelsAreTruncatedAndEndAtTwo) {
    const ProtectionInputs inputs;
    expectFailure(inputs.optionsWith("video-encrypt-level", 2.9), "none");
    const std::string refused =
        "10: Not enough information given for encryption: invalid video-encrypt-level";
    for (const double level : {3.0, -1.0, 1e30, std::numeric_limits<double>::quiet_NaN(),
                               std::numeric_limits<double>::infinity()}) {
        expectFailure(inputs.optionsWith("video-encrypt-level", level), refused);
    }
    // Truncation towards zero: not below it yet.
    expectFailure(inputs.optionsWith("video-encrypt-level", -0.9), "none");
}

TEST(EncryptionSetupTest, AClearStartThatIsNoNumberIsNone) {
    EXPECT_TRUE(passesInChild([] {
        const ProtectionInputs inputs;
        const OptionMap options =
            inputs.optionsWith("ms-unencrypted", std::numeric_limits<double>::infinity());
        EXPECT_EQ(opened(Job(options), inputs).flags[4], 0U);
    }));
}

TEST(EncryptionSetupTest, AClearStartKeepsItsLow32Bits) {
    const struct {
        double given;
        unsigned long word;
    } cases[] = {{-1.0, 4294967295}, {-0.9, 0}, {4294967295.0, 4294967295}, {4294967297.0, 1}};
    for (const auto& c : cases) {
        EXPECT_TRUE(passesInChild([&c] {
            const ProtectionInputs inputs;
            const OptionMap options = inputs.optionsWith("ms-unencrypted", c.given);
            EXPECT_EQ(opened(Job(options), inputs).flags[4], c.word) << c.given;
        }));
    }
}

TEST(EncryptionSetupTest, MissingFilesAreToldBeforeABadLevel) {
    const ProtectionInputs inputs;
    for (const char* key : {"common-key", "transport-cert", "license-server-cert",
                            "packager-credential", "policy-file"}) {
        OptionMap options = inputs.options();
        options["video-encrypt-level"] = 3.0;
        options[key] = inputs.folder / "none";
        expectFailure(options, "1: " + (inputs.folder / "none") + " file does not exist");
        options[key] = std::string();
        expectFailure(options, "1:  file does not exist");
        options[key] = inputs.folder.path();
        expectFailure(options, "1: Path is not a file " + inputs.folder.path());
    }
}

// The first file that is read is the common key.
TEST(EncryptionSetupTest, FilesAreReadInTheirOrder) {
    const ProtectionInputs inputs;
    OptionMap options = inputs.options();
    const std::string keys[] = {"common-key", "transport-cert", "license-server-cert",
                                "packager-credential", "policy-file"};
    for (const std::string& key : keys) options[key] = "/none/" + key;
    for (const std::string& key : keys) {
        expectFailure(options, "1: /none/" + key + " file does not exist");
        options[key] = inputs.policy;
    }
}

TEST(EncryptionSetupTest, EmptyFilesAreRefusedByTheLibrary) {
    const ProtectionInputs inputs;
    const std::string empty = inputs.folder.write("empty", {});
    expectFailure(inputs.optionsWith("common-key", empty),
                  libraryCode(HLX_ERROR_COMMON_KEY_TOO_SHORT));
    expectFailure(inputs.optionsWith("transport-cert", empty), libraryCode(0));
    expectFailure(inputs.optionsWith("license-server-cert", empty), libraryCode(0));
    expectFailure(inputs.optionsWith("packager-credential", empty),
                  libraryCode(HLX_ERROR_CREDENTIAL_UNREADABLE));
    expectFailure(inputs.optionsWith("policy-file", empty), libraryCode(HLX_ERROR_POLICY_EMPTY));
}

TEST(EncryptionSetupTest, FilesOfTheWrongKindAreRefused) {
    const ProtectionInputs inputs;
    expectFailure(inputs.optionsWith("transport-cert", inputs.policy), libraryCode(0));
    expectFailure(inputs.optionsWith("license-server-cert", inputs.credential), libraryCode(0));
    expectFailure(inputs.optionsWith("packager-credential", inputs.serverCert),
                  libraryCode(HLX_ERROR_CREDENTIAL_UNREADABLE));
    expectFailure(inputs.optionsWith("credential-pwd", std::string("wrong")),
                  libraryCode(HLX_ERROR_CREDENTIAL_WRONG_PASSWORD));
    const std::string chain = inputs.folder.write("chain", inputs.serverDer + inputs.transportDer);
    expectFailure(inputs.optionsWith("license-server-cert", chain),
                  libraryCode(HLX_ERROR_INVALID_CERTIFICATE));
    const std::string large = inputs.folder.write("large", kz::test::fill(10 * 1024 * 1024, 'p'));
    expectFailure(inputs.optionsWith("policy-file", large),
                  libraryCode(HLX_ERROR_POLICY_TOO_LARGE));
}

TEST(EncryptionSetupTest, AnExpiredTransportCertificateOnlyGivesAnotherAnswer) {
    EXPECT_TRUE(passesInChild([] {
        CertificateSpec expired = ProtectionInputs::spec(1);
        expired.validUntilSeconds = -100;
        const ProtectionInputs inputs(expired);
        const Job job(inputs.options());
        std::string dateText;
        EXPECT_FALSE(job.setup->certificateStaysValid(dateText));
        EXPECT_EQ(dateText.substr(dateText.size() - 4), " GMT");
    }));
    EXPECT_TRUE(passesInChild([] {
        const ProtectionInputs inputs;
        const Job job(inputs.options());
        std::string dateText;
        EXPECT_TRUE(job.setup->certificateStaysValid(dateText));
    }));
}

TEST(EncryptionSetupTest, TheWarningHasItsTwoMissingBlanks) {
    EXPECT_EQ(certificateWarning("05-Mar-2031 14:07:09 GMT"),
              "Orvane Media Server content protection certificates shall expire(or has expired) "
              "w.e.f from 05-Mar-2031 14:07:09 GMT.Please install updated certificates.\n");
}

TEST(EncryptionSetupTest, TheMetadataFileIsReplaced) {
    EXPECT_TRUE(passesInChild([] {
        const ProtectionInputs inputs;
        const OptionMap options = inputs.optionsWith("output-path", inputs.folder.path());
        inputs.folder.write("drmmetadata.bin", kz::test::fill(100000, 1));
        const Job job(options);
        writeDrmMetadataFile(options, *job.setup);
        const Bytes written = kz::test::readFile(inputs.folder / "drmmetadata.bin");
        EXPECT_EQ(std::vector<std::uint8_t>(written), job.setup->metadata());
    }));
}

TEST(EncryptionSetupTest, TheLibraryStopsWithIt) {
    EXPECT_TRUE(passesInChild([] {
        const ProtectionInputs inputs;
        Job job(inputs.options());
        job.setup.reset();
        EXPECT_EQ(HLXTerminate(), HLX_ERROR_NOT_INITIALIZED);
    }));
}

}  // namespace
}  // namespace torvo::offline
