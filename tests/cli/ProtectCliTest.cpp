#include <algorithm>
#include <filesystem>
#include <functional>
#include <set>

#include <gtest/gtest.h>

#include "cli/CommandLine.h"
#include "support/Presentation.h"
#include "support/ProtectionFiles.h"
#include "support/TestLicenseServer.h"

namespace kz::test {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kTagHeader = 11;
constexpr std::size_t kFilterHeader = 7;  // count, "SE" with its zero, length of the parameters
constexpr std::size_t kParameters = 17;   // flag and IV

std::string media(const std::string& name) {
    return std::string(KZ_TEST_DATA_DIR) + "/media/" + name;
}

bool isEncrypted(const Bytes& tag) { return (tag.at(0) & 0x20) != 0; }

/// The size of the codec header of an encrypted tag, by its first body byte.
std::size_t codecHeaderSize(const Bytes& tag) {
    const int first = tag.at(kTagHeader);
    if ((tag[0] & 0x1F) == 9) return (first & 0x0F) == 7 ? 5 : 1;
    return (first & 0xF0) == 0xA0 || (first & 0xF0) == 0xD0 ? 2 : 1;
}

Bytes ivOf(const Bytes& tag) {
    return tag.slice(kTagHeader + codecHeaderSize(tag) + kFilterHeader + 1, 16);
}

/// The clear tag that an encrypted one stands for; other tags as they are.
Bytes clearTag(const Bytes& tag, const Bytes& key) {
    if (!isEncrypted(tag)) return tag;
    const std::size_t header = kTagHeader + codecHeaderSize(tag);
    const std::size_t start = header + kFilterHeader + kParameters;
    EXPECT_EQ(tag.slice(header, 8), hex("01 534500 000011 80"));
    const Bytes sample = decryptSample(tag.slice(start, tag.size() - start - 4), key, ivOf(tag));
    const Bytes body = tag.slice(kTagHeader, header - kTagHeader) + sample;
    return u8(tag[0] - 0x20U) + u24(body.size()) + tag.slice(4, 7) + body + u32(body.size() + 11);
}

bool sizesAddUp(const Bytes& tag) {
    const std::size_t body = tag.size() - kTagHeader - 4;
    return tag.slice(1, 3) == u24(body) && tag.slice(tag.size() - 4, 4) == u32(body + 11);
}

bool isSequenceHeader(const Bytes& tag) {
    const int type = tag.at(0);
    const int first = tag.at(kTagHeader);
    return tag.size() > kTagHeader + 5 && tag[kTagHeader + 1] == 0 &&
           ((type == 9 && (first & 0x0F) == 7) || (type == 8 && (first & 0xF0) == 0xA0));
}

std::uint32_t timeOf(const Bytes& tag) {
    return (static_cast<std::uint32_t>(tag[7]) << 24) | (tag[4] << 16U) | (tag[5] << 8U) | tag[6];
}

class ProtectCliTest : public ::testing::Test {
protected:
    /// Packages into the folder `out` of its own; the run must succeed and be silent.
    void package(const std::string& out, std::vector<std::string> arguments) {
        arguments.push_back("--output-path=" + (work / out));
        const ProcessResult result = packager(arguments);
        EXPECT_EQ(result.status, 0) << result.err;
        EXPECT_EQ(result.err, "");
    }
    std::vector<std::string> withProtection(const std::string& input,
                                            const std::vector<std::string>& more = {}) const {
        std::vector<std::string> arguments = files.arguments();
        arguments.push_back("--input-file=" + media(input));
        arguments.insert(arguments.end(), more.begin(), more.end());
        return arguments;
    }
    /// The tags of a protected run.
    std::vector<Bytes> protectedTags(const std::string& input,
                                     const std::vector<std::string>& more = {}) {
        package("protected", withProtection(input, more));
        const Presentation presentation = read("protected", input);
        EXPECT_EQ(inconsistencies(presentation), std::vector<std::string>());
        return tagImages(presentation);
    }
    std::vector<Bytes> clearTags(const std::string& input) {
        package("clear", {"--input-file=" + media(input)});
        return tagImages(read("clear", input));
    }
    Presentation read(const std::string& out, const std::string& input) const {
        return readPresentation(work / out, fs::path(input).stem().string());
    }
    /// Decrypts all tags and compares; IVs and sizes must be right.
    void expectSame(const std::vector<Bytes>& tags, const std::vector<Bytes>& clear) const {
        ASSERT_EQ(tags.size(), clear.size());
        std::set<Bytes> ivs;
        std::size_t encrypted = 0;
        for (std::size_t i = 0; i < tags.size(); ++i) {
            EXPECT_TRUE(sizesAddUp(tags[i])) << i;
            ASSERT_EQ(clearTag(tags[i], files.contentKey), clear[i]) << i;
            if (!isEncrypted(tags[i])) continue;
            ++encrypted;
            ivs.insert(ivOf(tags[i]));
        }
        EXPECT_EQ(ivs.size(), encrypted);
    }
    /// Which tags are encrypted must be what `wanted` says of the clear ones.
    static void expectEncrypted(const std::vector<Bytes>& tags, const std::vector<Bytes>& clear,
                                const std::function<bool(const Bytes&)>& wanted) {
        ASSERT_EQ(tags.size(), clear.size());
        for (std::size_t i = 0; i < tags.size(); ++i) {
            const bool expected = !isSequenceHeader(clear[i]) && wanted(clear[i]);
            ASSERT_EQ(isEncrypted(tags[i]), expected) << "tag " << i;
        }
    }
    std::vector<std::string> outputs(const std::string& out) const {
        std::vector<std::string> names;
        if (!fs::exists(work / out)) return names;
        for (const auto& entry : fs::directory_iterator(work / out)) {
            names.push_back(entry.path().filename().string());
        }
        std::sort(names.begin(), names.end());
        return names;
    }

    ProtectionFiles files;
    TempDir work;
};

class ProtectMediaTest : public ProtectCliTest,
                         public ::testing::WithParamInterface<const char*> {};

TEST_P(ProtectMediaTest, DecryptsToTheSamplesOfTheClearRun) {
    const std::vector<Bytes> clear = clearTags(GetParam());
    const std::vector<Bytes> tags = protectedTags(GetParam());
    ASSERT_FALSE(clear.empty());
    expectSame(tags, clear);
    expectEncrypted(tags, clear, [](const Bytes&) { return true; });
}

INSTANTIATE_TEST_SUITE_P(Flv, ProtectMediaTest,
                         ::testing::Values("aac_edge_12s.flv", "aac_only.flv",
                                           "audio_late_500ms.flv", "eos_11s.flv", "h263_mp3.flv",
                                           "h264_aac_20s.flv", "h264_aac_bframes.flv",
                                           "h264_only.flv", "long_gop_9s.flv", "mp3_only.flv",
                                           "nellymoser_22k.flv", "nellymoser_8k_h263.flv",
                                           "scene_cuts.flv", "short_3s.flv", "speex_only.flv",
                                           "video_late_700ms.flv"));

INSTANTIATE_TEST_SUITE_P(Mp4, ProtectMediaTest,
                         ::testing::Values("aac_only.m4a", "ac3.mp4", "eac3.mp4", "empty_edit.mp4",
                                           "frag_dbm.mp4", "frag_base_offset.mp4",
                                           "h264_aac_bframes.mp4", "h264_aac_faststart.mp4",
                                           "long_gop_9s.mp4", "mp3.mp4", "mpeg4p2.mp4",
                                           "ts90000.mp4"));

TEST_F(ProtectCliTest, EachKindOfTrackHasItsSwitch) {
    const char* const input = "h264_aac_20s.flv";
    const std::vector<Bytes> clear = clearTags(input);
    const std::vector<Bytes> video = protectedTags(input, {"--encrypt-audio=false"});
    expectSame(video, clear);
    expectEncrypted(video, clear, [](const Bytes& tag) { return tag[0] == 9; });
    const std::vector<Bytes> audio = protectedTags(input, {"--encrypt-video=false"});
    expectSame(audio, clear);
    expectEncrypted(audio, clear, [](const Bytes& tag) { return tag[0] == 8; });
    const std::vector<Bytes> none =
        protectedTags(input, {"--encrypt-video=false", "--encrypt-audio=false"});
    expectEncrypted(none, clear, [](const Bytes&) { return false; });
}

/// Whether a clear AVC tag has a slice that `wanted` says of its NAL header.
bool hasSlice(const Bytes& tag, const std::function<bool(int header)>& wanted) {
    std::size_t at = kTagHeader + 5;
    while (at + 4 < tag.size() - 4) {
        const std::size_t size = (static_cast<std::size_t>(tag[at]) << 24) |
                                 (static_cast<std::size_t>(tag[at + 1]) << 16) |
                                 (static_cast<std::size_t>(tag[at + 2]) << 8) | tag[at + 3];
        const int header = tag.at(at + 4);
        const int type = header & 0x1F;
        if (type >= 1 && type <= 5 && wanted(header)) return true;
        at += 4 + size;
    }
    return false;
}

TEST_F(ProtectCliTest, LevelsTakeKeyPicturesThenReferencesThenAll) {
    const char* const input = "h264_aac_bframes.flv";
    const std::vector<Bytes> clear = clearTags(input);
    const std::vector<std::function<bool(int)>> wanted = {
        [](int header) { return (header & 0x1F) == 5; },
        [](int header) { return (header & 0x60) != 0; },
        [](int) { return true; },
    };
    std::vector<std::size_t> counts;
    for (std::size_t level = 0; level < wanted.size(); ++level) {
        const std::vector<Bytes> tags =
            protectedTags(input, {"--video-encrypt-level=" + std::to_string(level)});
        expectSame(tags, clear);
        expectEncrypted(tags, clear, [&](const Bytes& tag) {
            return tag[0] != 9 || tag.size() <= kTagHeader + 9 || hasSlice(tag, wanted[level]);
        });
        counts.push_back(
            static_cast<std::size_t>(std::count_if(tags.begin(), tags.end(), isEncrypted)));
    }
    EXPECT_LT(counts[0], counts[1]);
    EXPECT_LT(counts[1], counts[2]);
}

TEST_F(ProtectCliTest, TheStartCanStayClear) {
    const char* const input = "short_3s.flv";
    const std::vector<Bytes> clear = clearTags(input);
    for (const std::uint32_t until : {0U, 1500U, 1000000U}) {
        const std::vector<Bytes> tags =
            protectedTags(input, {"--ms-unencrypted=" + std::to_string(until)});
        expectSame(tags, clear);
        expectEncrypted(tags, clear, [&](const Bytes& tag) { return timeOf(tag) >= until; });
    }
}

TEST_F(ProtectCliTest, TwoRenditionsOfOneContentHaveOneKeyAndAHeaderEach) {
    package("protected", withProtection("mbr_60k.flv", {"--bitrate=60"}));
    package("protected", withProtection("mbr_120k.flv",
                                        {"--bitrate=120",
                                         "--manifest-file=" + (work / "protected/mbr_60k.kzd")}));
    package("clear", {"--input-file=" + media("mbr_60k.flv")});
    package("clear", {"--input-file=" + media("mbr_120k.flv")});
    for (const char* input : {"mbr_60k.flv", "mbr_120k.flv"}) {
        expectSame(tagImages(read("protected", input)), tagImages(read("clear", input)));
    }
    const std::string manifest = readFile(work / "protected/mbr_120k.kzd").str();
    const auto countOf = [&](const std::string& part) {
        int count = 0;
        for (auto at = manifest.find(part); at != std::string::npos;
             at = manifest.find(part, at + 1)) {
            ++count;
        }
        return count;
    };
    EXPECT_EQ(countOf("<drmAdditionalHeader"), 2);
    EXPECT_EQ(countOf("drmContentId=\"movie7\""), 2);
    EXPECT_EQ(countOf("drmAdditionalHeaderId="), 2);
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

TEST_F(ProtectCliTest, ExternalHeadersAndTheirUpdate) {
    package("protected", withProtection("short_3s.flv", {"--external-bootstrap"}));
    const Bytes header = readFile(work / "protected/short_3s.drmmeta");
    EXPECT_EQ(header.cutTo(20), hex("020011") + text("|AdditionalHeader"));
    const std::string manifest = work / "protected/short_3s.kzd";

    std::vector<std::string> update = files.arguments();
    update.insert(update.end(),
                  {"--update-drm-info", "--dump-drm-metadata", "--manifest-file=" + manifest});
    package("updated", update);
    EXPECT_EQ(outputs("updated"),
              (std::vector<std::string>{"short_3s_1.drmmeta", "short_3s_1.kzd"}));
    const Bytes updated = readFile(work / "updated/short_3s_1.drmmeta");
    EXPECT_NE(updated, header);
    EXPECT_EQ(updated.cutTo(20), header.cutTo(20));
    package("updated", update);
    EXPECT_TRUE(fileExists(work / "updated/short_3s_2.kzd"));
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

/// Every refusal of an input leaves no output folder behind.
TEST_F(ProtectCliTest, ARefusedInputEndsTheRunBeforeAnythingIsWritten) {
    const std::string empty = files.folder.write("empty", {});
    const std::string chain = files.folder.write("chain", files.serverDer + files.transportDer);
    const std::string large = files.folder.write("large", fill(10 * 1024 * 1024, 'p'));
    const std::string missing = files.folder / "none";
    CertificateSpec expired = ProtectionFiles::spec(2);
    expired.validUntilSeconds = -10;
    const std::string old = files.folder.write("old", makeCertificate(expired));
    const std::string library = "Error 11: Error in the Encryption Library \n";
    const std::string identified =
        "Error 14: Error in the Encryption Library Certificate not Identified\n";
    const struct {
        std::string key, value, error;
        int status;
    } cases[] = {
        {"common-key", missing, "Error 1: " + missing + " file does not exist\n", 1},
        {"common-key", files.folder.path(),
         "Error 1: Path is not a file " + files.folder.path() + "\n", 1},
        {"common-key", empty, library, 11},
        {"transport-cert", empty, identified, 14},
        {"transport-cert", files.policy, identified, 14},
        {"license-server-cert", files.credential, identified, 14},
        {"license-server-cert", chain, library, 11},
        {"license-server-cert", old, library, 11},
        {"packager-credential", empty, library, 11},
        {"packager-credential", files.serverCert, library, 11},
        {"credential-pwd", "wrong", library, 11},
        {"policy-file", empty, library, 11},
        {"policy-file", large, library, 11},
    };
    for (const auto& c : cases) {
        std::vector<std::string> arguments = withProtection("short_3s.flv");
        for (std::string& argument : arguments) {
            if (argument.rfind("--" + c.key + "=", 0) == 0) argument = "--" + c.key + "=" + c.value;
        }
        arguments.push_back("--output-path=" + (work / "out"));
        const ProcessResult result = packager(arguments);
        EXPECT_EQ(result.status, c.status) << c.key << " " << c.value;
        EXPECT_EQ(result.err, c.error) << c.key;
        EXPECT_FALSE(fileExists(work / "out"));
    }
}

// A common key and a content id pass the test of the options; then the first file is missing.
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

TEST_F(ProtectCliTest, SecretsAreInNoOutput) {
    std::vector<std::string> arguments = withProtection(
        "short_3s.flv",
        {"--external-bootstrap", "--dump-drm-metadata", "--output-path=" + (work / "out")});
    const ProcessResult result = packager(arguments);
    ASSERT_EQ(result.status, 0);
    std::vector<Bytes> written = {bytesOf(result.out), bytesOf(result.err)};
    for (const std::string& name : outputs("out"))
        written.push_back(readFile(work / ("out/" + name)));
    EXPECT_GE(written.size(), 2U + 6U);
    const Bytes ivKey = hex("1a18a49a208133cfefd43e1cfcbe4fda");
    for (const Bytes& secret :
         {files.commonKeyBytes, files.contentKey, ivKey, text(files.password)}) {
        for (const Bytes& bytes : written) {
            EXPECT_EQ(std::search(bytes.begin(), bytes.end(), secret.begin(), secret.end()),
                      bytes.end());
        }
    }
}

// The error line of a failed run, too.
TEST_F(ProtectCliTest, APasswordIsNotRepeatedInAnError) {
    std::vector<std::string> arguments = withProtection("short_3s.flv");
    arguments.push_back("--packager-credential=" + files.policy);
    const ProcessResult result = packager(arguments);
    EXPECT_NE(result.status, 0);
    EXPECT_EQ((result.out + result.err).find(files.password), std::string::npos);
}

}  // namespace
}  // namespace kz::test
