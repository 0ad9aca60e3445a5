#include "offline/EncryptionSetup.h"

#include "hlx/HLXLibrary.h"
#include "kzs/DrmAdditionalHeader.h"
#include "kzs/base/ByteOrder.h"
#include "kzs/base/Truncation.h"
#include "kzspkgutil/EncryptedPolicyFactory.h"
#include "offline/InputBytes.h"
#include "offline/OfflineException.h"
#include "offline/OutputFile.h"
#include "offline/OutputNames.h"

namespace torvo::offline {
namespace {

constexpr std::uint32_t kKind = 0;
constexpr std::uint32_t kHighestLevel = 2;

std::uint32_t flagWord(const OptionMap& options, const std::string& key) {
    return flagOf(options, key) ? 1 : 0;
}

/// On purpose: a negative number is a high unsigned one, and leaves almost everything clear.
/// Pinned by EncryptionSetupTest.AClearStartKeepsItsLow32Bits.
std::uint32_t clearMilliseconds(const OptionMap& options) {
    return kzs::low32(kzs::truncated(numberOf(options, "ms-unencrypted")));
}

/// On purpose: a negative level is a high unsigned number and fails like one, and 2.9 is 2.
/// Pinned by EncryptionSetupTest.LevelsAreTruncatedAndEndAtTwo.
std::uint32_t encryptLevel(const OptionMap& options) {
    const double value = numberOf(options, "video-encrypt-level");
    const std::uint32_t level = kzs::low32(kzs::truncated(value));
    if (!kzs::fitsInt64(value) || level > kHighestLevel) {
        throw EncryptionInfoException("invalid video-encrypt-level");
    }
    return level;
}

kzs::EncryptorContext gatherSettings(const OptionMap& options) {
    const std::string& contentId = textOf(options, "content-id");
    hlx::SecretBytes commonKey = readSecretBytes(textOf(options, "common-key"));
    const std::string& licenseServerUrl = textOf(options, "license-server-url");
    const auto transportCertificate = readInputBytes(textOf(options, "transport-cert"));
    const auto serverCertificate = readInputBytes(textOf(options, "license-server-cert"));
    const auto credential = readSecretBytes(textOf(options, "packager-credential"));
    const std::string& password = textOf(options, "credential-pwd");
    auto policy = readInputBytes(textOf(options, "policy-file"));
    hlx::EncryptionFlags flags;
    flags.video = flagWord(options, "encrypt-video");
    flags.audio = flagWord(options, "encrypt-audio");
    flags.data = flagWord(options, "encrypt-data");
    flags.msUnencrypted = clearMilliseconds(options);
    // On purpose: tested last, so that a missing file is told before a bad level.
    // Pinned by EncryptionSetupTest.MissingFilesAreToldBeforeABadLevel.
    flags.videoLevel = encryptLevel(options);
    return kzs::EncryptorContext(kKind, contentId, std::move(commonKey), licenseServerUrl,
                                 transportCertificate, serverCertificate, credential, password,
                                 std::move(policy), flags, /*secondCredential=*/{},
                                 /*secondPassword=*/"", /*extraCertificateCount=*/0,
                                 /*extraCertificates=*/nullptr);
}

std::vector<std::uint8_t> makeAdditionalHeader(const std::string& metadataText) {
    kzs::DrmAdditionalHeader header;
    header.metadata = metadataText;
    return kzs::bytesOf(header);
}

}  // namespace

EncryptionSetup::EncryptionSetup(const OptionMap& options, kzspkgutil::IPackagerContext& context)
    : context_(&context), encryptorContext_(gatherSettings(options)) {
    policy_ = kzspkgutil::makeEncryptedPolicy(*context_, encryptorContext_);
    encryptorContext_.wipeCommonKey();
    metadata_ = policy_->metadata();
    metadataText_ = policy_->metadataText();
    additionalHeader_ = makeAdditionalHeader(metadataText_);
}

// On purpose: the library stops before the fields go. Their handles can be given back after that.
// Pinned by EncryptionSetupTest.TheLibraryStopsWithIt.
EncryptionSetup::~EncryptionSetup() { hlx::stopLibrary(); }

bool EncryptionSetup::certificateStaysValid(std::string& dateText) const {
    return encryptorContext_.certificateStaysValid(encryptorContext_.transportCertificate(),
                                                   dateText);
}

std::string certificateWarning(const std::string& dateText) {
    // On purpose: no blanks in front of "(or" and of "Please".
    // Pinned by EncryptionSetupTest.TheWarningHasItsTwoMissingBlanks.
    return "Orvane Media Server content protection certificates shall expire(or has expired) "
           "w.e.f from " +
           dateText + ".Please install updated certificates.\n";
}

void writeDrmMetadataFile(const OptionMap& options, const EncryptionSetup& setup) {
    // On purpose: one name for all jobs, so that the next one in the folder replaces the file.
    // Pinned by EncryptionSetupTest.TheMetadataFileIsReplaced.
    const std::string path = pathInOutput(options, "drmmetadata.bin");
    refuseInput(path, textOf(options, "input-file"));
    OutputFile file(path);
    file.write(setup.metadata());
    file.close();
}

}  // namespace torvo::offline
