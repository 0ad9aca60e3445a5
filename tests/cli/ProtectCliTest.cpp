#include <algorithm>
#include <sstream>

#include "cli/ProtectFixture.h"
#include "support/FlvBuilder.h"
#include "support/TestLicenseServer.h"

namespace kz::test {
namespace {

class ProtectCliTest : public ProtectFixture {};

std::ptrdiff_t countOfEncrypted(const std::vector<Bytes>& tags) {
    return std::count_if(tags.begin(), tags.end(), isEncrypted);
}

TEST_F(ProtectCliTest, HigherLevelsEncryptMore) {
    const char* const input = "h264_aac_bframes.flv";
    std::vector<std::ptrdiff_t> counts;
    for (const char* level : {"0", "1", "2", "2.9"}) {
        counts.push_back(countOfEncrypted(
            protectedTags(input, {std::string("--video-encrypt-level=") + level})));
    }
    EXPECT_LT(counts[0], counts[1]);
    EXPECT_LT(counts[1], counts[2]);
    EXPECT_EQ(counts[2], counts[3]);
}

TEST_F(ProtectCliTest, TheClearStartEndsWithItsLastMillisecond) {
    const char* const input = "short_3s.flv";
    const std::vector<Bytes> clear = clearTags(input);
    const std::uint32_t time = timeOf(clear.at(clear.size() / 2));
    for (const std::uint32_t until : {time, time + 1}) {
        const std::vector<Bytes> tags =
            protectedTags(input, {"--ms-unencrypted=" + std::to_string(until) + ".9"});
        expectSame(tags, clear);
        expectEncrypted(tags, clear, [&](const Bytes& tag) { return timeOf(tag) >= until; });
    }
}

TEST_F(ProtectCliTest, TheMetadataIsDumpedAndOpensForTheLicenseServer) {
    package("protected", withProtection("short_3s.flv", {"--dump-drm-metadata"}));
    const OpenedMetadata opened = openMetadata(readFile(work / "protected/drmmetadata.bin"),
                                               ProtectionFiles::serverKey(), files.serverDer);
    EXPECT_EQ(opened.contentId, "movie7");
    EXPECT_EQ(opened.contentKey, files.contentKey);
    EXPECT_EQ(outputs("protected"),
              (std::vector<std::string>{"drmmetadata.bin", "short_3s.kzd", "short_3sSeg1.kzs",
                                        "short_3sSeg1.kzx"}));
}

TEST_F(ProtectCliTest, TheDumpHasNoEffectOnAClearRun) {
    package("clear", {"--input-file=" + media("short_3s.flv"), "--dump-drm-metadata"});
    EXPECT_EQ(outputs("clear").size(), 3U);
}

TEST_F(ProtectCliTest, AnExpiringTransportCertificateIsWarnedOf) {
    CertificateSpec expired = ProtectionFiles::spec(1);
    expired.validUntilSeconds = -3600;
    const ProtectionFiles old(expired);
    std::vector<std::string> arguments = old.arguments();
    arguments.push_back("--input-file=" + media("short_3s.flv"));
    arguments.push_back("--output-path=" + (work / "out"));
    const ProcessResult result = packager(arguments);
    EXPECT_EQ(result.status, 0);
    const std::string start =
        "Orvane Media Server content protection certificates shall expire(or has expired) w.e.f "
        "from ";
    const std::string end = " GMT.Please install updated certificates.\n";
    ASSERT_GT(result.err.size(), start.size() + end.size());
    EXPECT_EQ(result.err.substr(0, start.size()), start);
    EXPECT_EQ(result.err.substr(result.err.size() - end.size()), end);
    EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1);
}

// First the warning, then the run; the metadata is dumped only after one that went well.
TEST_F(ProtectCliTest, AFailedRunIsWarnedOfExpiryAndDumpsNothing) {
    CertificateSpec expired = ProtectionFiles::spec(1);
    expired.validUntilSeconds = 29L * 24 * 3600;
    const std::string transport = files.folder.write("expiring.der", makeCertificate(expired));
    const std::string missing = work / "none.flv";
    const ProcessResult result =
        packager(withProtection("", {"--transport-cert=" + transport, "--input-file=" + missing,
                                     "--dump-drm-metadata", "--output-path=" + (work / "out")}));
    EXPECT_EQ(result.status, 1);
    const std::size_t end = result.err.find('\n');
    EXPECT_EQ(result.err.rfind("Orvane Media Server content protection certificates", 0), 0U);
    EXPECT_EQ(result.err.substr(end + 1), "Error 1: " + missing + " file does not exist\n");
    EXPECT_EQ(outputs("out"), std::vector<std::string>());
}

TEST_F(ProtectCliTest, CommonKeyAndContentIdAloneFailOnTheNamelessFile) {
    const ProcessResult result =
        packager({"--common-key=" + files.commonKey, "--content-id=c",
                  "--input-file=" + media("short_3s.flv"), "--output-path=" + (work / "out")});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "Error 1:  file does not exist\n");
}

TEST_F(ProtectCliTest, ABadLevelIsToldOnlyWhenAllFilesAreThere) {
    const ProcessResult result =
        packager(withProtection("short_3s.flv", {"--video-encrypt-level=3"}));
    EXPECT_EQ(result.status, 10);
    EXPECT_EQ(
        result.err,
        "Error 10: Not enough information given for encryption: invalid video-encrypt-level\n");
}

// 5 bytes of codec header, 24 of filter and IV, 16777194 of sample with 6 of padding: more than the
// 16777215 that a tag can tell.
TEST_F(ProtectCliTest, ASampleThatOutgrowsItsTagEndsTheRun) {
    const Bytes clip = flvFile({avcConfig(0), avcFrame(0, true, fill(0xFFFFFF - 5 - 16, 1)),
                                avcFrame(5000, true, fill(10, 1))});
    const std::string input = "--input-file=" + work.path() + "/large.flv";
    writeFile(work / "large.flv", clip);
    package("clear", {input});
    const ProcessResult result =
        packager(withProtection("", {input, "--output-path=" + (work / "out")}));
    EXPECT_EQ(result.status, 12);
    EXPECT_EQ(result.err,
              "Error 12: Standard Exception: Error (5) - a body of 16777229 bytes is too large for "
              "an FLV tag\n");
    // Where it stays clear it fits.
    package("protected", withProtection("", {input, "--encrypt-video=false"}));
}

/// Secrets as they are, in hex digits, and in base64 from each of the three positions in a group.
std::vector<Bytes> formsOf(const Bytes& secret) {
    std::vector<Bytes> forms = {secret};
    std::string lower;
    std::string upper;
    for (const std::uint8_t byte : secret) {
        for (const unsigned shift : {4U, 0U}) {
            lower += "0123456789abcdef"[(byte >> shift) & 15U];
            upper += "0123456789ABCDEF"[(byte >> shift) & 15U];
        }
    }
    forms.push_back(text(lower));
    forms.push_back(text(upper));
    for (std::size_t skipped = 0; skipped < 3; ++skipped) {
        const std::size_t whole = (secret.size() - skipped) / 3 * 3;
        forms.push_back(text(toBase64(secret.slice(skipped, whole))));
    }
    return forms;
}

bool holds(const Bytes& bytes, const Bytes& part) {
    return std::search(bytes.begin(), bytes.end(), part.begin(), part.end()) != bytes.end();
}

/// All that a run wrote, printed texts included.
std::vector<Bytes> everythingOf(const ProcessResult& result, const TempDir& work,
                                const std::vector<std::string>& names) {
    std::vector<Bytes> written = {bytesOf(result.out), bytesOf(result.err)};
    for (const std::string& name : names) written.push_back(readFile(work / ("out/" + name)));
    return written;
}

TEST_F(ProtectCliTest, SecretsAreInNoOutput) {
    const Bytes ivKey = hex("1a18a49a208133cfefd43e1cfcbe4fda");
    const Bytes privateKey = privateKeyBytes(testKey(KeyKind::p256, 3));
    // The private value itself stands behind 0x04 0x20 in the structure.
    const Bytes marker = hex("0420");
    const auto found =
        std::search(privateKey.begin(), privateKey.end(), marker.begin(), marker.end());
    ASSERT_LT(found + 34, privateKey.end());
    const Bytes secrets[] = {files.commonKeyBytes, files.contentKey, ivKey, text(files.password),
                             Bytes(found + 2, found + 34)};
    for (const char* level : {"0", "2"}) {
        const ProcessResult result =
            packager(withProtection("short_3s.flv", {"--external-bootstrap", "--dump-drm-metadata",
                                                     std::string("--video-encrypt-level=") + level,
                                                     "--output-path=" + (work / "out")}));
        ASSERT_EQ(result.status, 0);
        const std::vector<Bytes> written = everythingOf(result, work, outputs("out"));
        EXPECT_EQ(written.size(), 2U + 6U);
        for (const Bytes& secret : secrets) {
            for (const Bytes& form : formsOf(secret)) {
                for (const Bytes& bytes : written) EXPECT_FALSE(holds(bytes, form));
            }
        }
    }
}

// The error line of a failed run, too.
TEST_F(ProtectCliTest, APasswordIsNotRepeatedInAnError) {
    const ProcessResult result =
        packager(withProtection("short_3s.flv", {"--packager-credential=" + files.policy}));
    EXPECT_EQ(result.status, 11);
    EXPECT_EQ((result.out + result.err).find(files.password), std::string::npos);
}

// The policy is the last file that is read, here a pipe: whoever opens its other end knows that the
// run is at this point, with all keys in its memory.
TEST_F(ProtectCliTest, ARunThatHoldsKeysWritesNoCoreFiles) {
    const std::string pipe = work / "policy";
    const std::string script =
        "ulimit -c unlimited 2>/dev/null; mkfifo " + pipe + " && { \"$0\" \"$@\" & exec 3>" + pipe +
        "; grep '^Max core file size' /proc/$!/limits; kill -KILL $!; wait $!; }";
    std::vector<std::string> command = {"/bin/sh", "-c", script, KZ_PACKAGER};
    for (const std::string& argument : withProtection(
             "short_3s.flv", {"--policy-file=" + pipe, "--output-path=" + (work / "out")})) {
        command.push_back(argument);
    }
    const ProcessResult result = run(command);
    EXPECT_FALSE(result.timedOut);
    std::istringstream words(result.out);
    std::string max, core, file, size, softLimit;
    words >> max >> core >> file >> size >> softLimit;
    EXPECT_EQ(size, "size") << result.out;
    // Of 1 byte: 0 would still let a dump go to a program.
    EXPECT_TRUE(softLimit == "1" || softLimit == "0") << result.out;
}

}  // namespace
}  // namespace kz::test
