#include <map>

#include "cli/ProtectFixture.h"

namespace kz::test {
namespace {

const std::string kRefused = "Error 11: Error in the Encryption Library \n";
const std::string kNotIdentified =
    "Error 14: Error in the Encryption Library Certificate not Identified\n";

/// Protected runs whose options stand in a configuration file, good ones and bad ones.
class ProtectSettingsTest : public ProtectFixture {
protected:
    using Settings = std::map<std::string, std::string>;

    /// The settings of a good run, some replaced.
    Settings settingsWith(const Settings& replaced) const {
        Settings settings = replaced;
        for (const std::string& argument : files.arguments()) {
            const std::size_t sign = argument.find('=');
            settings.emplace(argument.substr(2, sign - 2), argument.substr(sign + 1));
        }
        return settings;
    }
    static Bytes xmlOf(const Settings& settings) {
        std::string xml = "<?xml version=\"1.0\"?>\n<settings>\n";
        for (const auto& [key, value] : settings) {
            xml += "  <" + key + ">" + value + "</" + key + ">\n";
        }
        return text(xml + "</settings>\n");
    }
    ProcessResult runWith(const Bytes& xml, std::vector<std::string> more = {}) {
        more.push_back("--conf-file=" + files.folder.write("settings.xml", xml));
        more.push_back("--input-file=" + media("short_3s.flv"));
        more.push_back("--output-path=" + (work / "out"));
        return packager(more);
    }
    void expectRefused(const Bytes& xml, const std::string& line) {
        SCOPED_TRACE(xml.str());
        const ProcessResult result = runWith(xml);
        EXPECT_EQ(result.status, std::stoi(line.substr(6)));
        EXPECT_EQ(result.out, "");
        EXPECT_EQ(result.err, line);
        EXPECT_FALSE(fileExists(work / "out"));
    }
    void expectRefused(const Settings& replaced, const std::string& line) {
        expectRefused(xmlOf(settingsWith(replaced)), line);
    }
    std::string file(const Bytes& content) { return files.folder.write("input", content); }
};

TEST_F(ProtectSettingsTest, AGoodFileMakesTheSameFilesAsTheCommandLine) {
    const ProcessResult result = runWith(xmlOf(settingsWith({{"dump-drm-metadata", "true"}})));
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.out + result.err, "");
    EXPECT_EQ(outputs("out"), (std::vector<std::string>{"drmmetadata.bin", "short_3s.kzd",
                                                        "short_3sSeg1.kzs", "short_3sSeg1.kzx"}));
    const std::vector<Bytes> tags = tagImages(read("out", "short_3s.flv"));
    expectSame(tags, clearTags("short_3s.flv"));
    expectEncrypted(tags, clearTags("short_3s.flv"),
                    [](const Bytes& tag) { return !isSequenceHeader(tag); });
}

TEST_F(ProtectSettingsTest, MissingFilesAndFoldersAreToldByTheirNames) {
    const std::string missing = files.folder / "none";
    const std::string folder = files.folder.path();
    for (const char* option : {"common-key", "transport-cert", "license-server-cert",
                               "packager-credential", "policy-file"}) {
        expectRefused({{option, missing}}, "Error 1: " + missing + " file does not exist\n");
        expectRefused({{option, folder}}, "Error 1: Path is not a file " + folder + "\n");
    }
}

TEST_F(ProtectSettingsTest, EmptyTruncatedAndWrongFilesAreRefused) {
    const std::string empty = files.folder.write("empty", Bytes());
    for (const char* option : {"common-key", "packager-credential", "policy-file"}) {
        expectRefused({{option, empty}}, kRefused);
    }
    for (const char* option : {"transport-cert", "license-server-cert"}) {
        expectRefused({{option, empty}}, kNotIdentified);
        expectRefused({{option, file(files.serverDer.cutTo(100))}}, kNotIdentified);
        expectRefused({{option, files.credential}}, kNotIdentified);
        expectRefused({{option, file(files.serverDer + files.transportDer)}}, kRefused);
    }
    expectRefused({{"packager-credential", files.serverCert}}, kRefused);
    expectRefused({{"packager-credential", file(readFile(files.credential).cutTo(100))}}, kRefused);
    expectRefused({{"policy-file", file(fill(10 * 1024 * 1024, 'p'))}}, kRefused);
    const Bytes stranger =
        makePfx(testKey(KeyKind::p256, 4), makeCertificate(ProtectionFiles::spec(3)), [&] {
            PfxSpec spec;
            spec.password = files.password;
            return spec;
        }());
    expectRefused({{"packager-credential", file(stranger)}}, kRefused);
}

// White space is part of a text, so that a password may begin or end with it.
TEST_F(ProtectSettingsTest, APasswordWithBlanksAroundItIsAWrongOne) {
    expectRefused({{"credential-pwd", "wrong"}}, kRefused);
    expectRefused({{"credential-pwd", " " + files.password + " "}}, kRefused);
}

TEST_F(ProtectSettingsTest, ABadLevelAndAMissingOptionAreTold) {
    const std::string start = "Error 10: Not enough information given for encryption: ";
    expectRefused({{"video-encrypt-level", "3"}}, start + "invalid video-encrypt-level\n");
    expectRefused({{"credential-pwd", ""}}, start + "no packager credential password specified\n");
    expectRefused({{"policy-file", ""}}, start + "no policy specified\n");
    // A word that is no number is the default, without a word.
    EXPECT_EQ(runWith(xmlOf(settingsWith({{"video-encrypt-level", "high"}}))).status, 0);
}

TEST_F(ProtectSettingsTest, AFileThatIsBrokenOrNotThereEndsTheRun) {
    const Bytes good = xmlOf(settingsWith({}));
    expectRefused(good.cutTo(good.size() - 4), "Error 8: XML Library failed Bad XML File\n");
    expectRefused(Bytes(), "Error 8: XML Library failed Bad XML File\n");
    const std::string missing = files.folder / "none.xml";
    const ProcessResult result = packager(
        {"--conf-file=" + missing, "--input-file=" + missing, "--output-path=" + (work / "out")});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "Error 1: " + missing + " file does not exist\n");
    EXPECT_FALSE(fileExists(work / "out"));
}

TEST_F(ProtectSettingsTest, TheCommandLineMendsWhatTheFileHasWrong) {
    const Bytes wrong = xmlOf(settingsWith({{"credential-pwd", "wrong"}}));
    EXPECT_EQ(runWith(wrong, {"--credential-pwd=" + files.password}).status, 0);
    EXPECT_EQ(outputs("out").size(), 3U);
}

}  // namespace
}  // namespace kz::test
