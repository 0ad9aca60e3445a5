#include <algorithm>
#include <cstring>

#include "cli/ProtectFixture.h"
#include "support/StoppedProcess.h"

namespace kz::test {
namespace {

// No twelve bytes of it are like any others, and the encryption library takes it.
const std::string kPassword =
    "V9x-quartz!lantern~07_Bismuth+heron,umbrella%42;Zeppelin#obsidian=Kestrel";

/// Bytes as each of the forms in which a program may keep a text.
std::vector<Bytes> formsOf(const Bytes& bytes) {
    Bytes highFirst;
    Bytes lowFirst;
    for (const std::uint8_t byte : bytes) {
        highFirst = highFirst + u8(0) + u8(byte);
        lowFirst = lowFirst + u8(byte) + u8(0);
    }
    return {bytes, highFirst, lowFirst};
}

std::size_t countIn(const std::vector<Bytes>& memory, const Bytes& wanted) {
    std::size_t count = 0;
    for (const Bytes& mapping : memory) {
        const std::uint8_t* at = mapping.data();
        const std::uint8_t* const end = at + mapping.size();
        while (const void* hit =
                   memmem(at, static_cast<std::size_t>(end - at), wanted.data(), wanted.size())) {
            ++count;
            at = static_cast<const std::uint8_t*>(hit) + 1;
        }
    }
    return count;
}

/// How many pieces of twelve characters of a text are anywhere in the memory. Whole copies wouldn't
/// do: what is given back is overwritten in part.
std::size_t piecesIn(const std::vector<Bytes>& memory, const Bytes& text) {
    constexpr std::size_t kPiece = 12;
    std::size_t count = 0;
    for (std::size_t at = 0; at + kPiece <= text.size(); at += kPiece) {
        for (const Bytes& form : formsOf(text.slice(at, kPiece))) count += countIn(memory, form);
    }
    return count;
}

/// What is in the memory of a protected run when it is about to write its first segment.
class ProtectSecretsTest : public ProtectFixture {
protected:
    ProtectSecretsTest() {
        PfxSpec pfx;
        pfx.password = kPassword;
        credential = files.folder.write(
            "long.pfx",
            makePfx(testKey(KeyKind::p256, 3), makeCertificate(ProtectionFiles::spec(3)), pfx));
    }
    /// The arguments of a run whose password is given by the words `given`; `more` as for
    /// withProtection.
    std::vector<std::string> arguments(const std::vector<std::string>& given,
                                       std::vector<std::string> more = {}) const {
        more.push_back("--packager-credential=" + credential);
        more.push_back("--output-path=" + (work / "out"));
        std::vector<std::string> all = {KZ_PACKAGER};
        for (const std::string& argument : withProtection("h264_aac_20s.flv", more)) {
            if (argument.rfind("--credential-pwd=", 0) != 0) all.push_back(argument);
        }
        all.insert(all.end(), given.begin(), given.end());
        return all;
    }
    void expectNoPassword(const std::vector<std::string>& more) const {
        const StoppedProcess process(arguments(more), ".kzs");
        const std::vector<Bytes> memory = process.writableMemory();
        EXPECT_EQ(piecesIn(memory, text(kPassword)), 0U);
        EXPECT_EQ(process.commandLine().find(kPassword.substr(0, 12)), std::string::npos);
    }

    std::string credential;
};

// What the run still works with shows that the search isn't blind.
TEST_F(ProtectSecretsTest, TheContentKeyIsTheOneThatIsNeeded) {
    const StoppedProcess process(arguments({"--credential-pwd=" + kPassword}), ".kzs");
    const std::vector<Bytes> memory = process.writableMemory();
    EXPECT_GT(countIn(memory, files.contentKey), 0U);
    EXPECT_GT(countIn(memory, text("--output-path=")), 0U);
    EXPECT_EQ(piecesIn(memory, text(kPassword)), 0U);
}

TEST_F(ProtectSecretsTest, TheBytesOfKeyFilesAreGone) {
    const Bytes commonKey = text("Tamarind:0419|Peridot-Quill/Sextant");
    const std::string file = files.folder.write("other.key", commonKey);
    const StoppedProcess process(
        arguments({"--credential-pwd=" + kPassword}, {"--common-key=" + file}), ".kzs");
    const std::vector<Bytes> memory = process.writableMemory();
    EXPECT_EQ(piecesIn(memory, commonKey), 0U);
    EXPECT_EQ(countIn(memory, readFile(credential).slice(200, 32)), 0U);
}

TEST_F(ProtectSecretsTest, ThePasswordIsGoneHoweverItWasGiven) {
    expectNoPassword({"--credential-pwd", kPassword});
    expectNoPassword({"--cred", kPassword});
    expectNoPassword({"--cr=" + kPassword});
}

TEST_F(ProtectSecretsTest, ThePasswordOfTheConfigurationFileIsGoneToo) {
    const std::string settings = files.folder.write(
        "settings.xml",
        text("<settings>\n  <credential-pwd>" + kPassword + "</credential-pwd>\n</settings>\n"));
    expectNoPassword({"--conf-file=" + settings});
}

// Texts of up to 15 characters lie within their objects, on the stack as well.
TEST_F(ProtectSecretsTest, AShortPasswordIsGoneToo) {
    const std::string password = "zq7%Kestrel+9";
    PfxSpec pfx;
    pfx.password = password;
    credential = files.folder.write(
        "short.pfx",
        makePfx(testKey(KeyKind::p256, 3), makeCertificate(ProtectionFiles::spec(3)), pfx));
    const std::string settings = files.folder.write(
        "settings.xml",
        text("<settings><credential-pwd>" + password + "</credential-pwd></settings>"));
    for (const std::string& given : {"--credential-pwd=" + password, "--conf-file=" + settings}) {
        const StoppedProcess process(arguments({given}), ".kzs");
        const std::vector<Bytes> memory = process.writableMemory();
        for (const Bytes& form : formsOf(text(password))) EXPECT_EQ(countIn(memory, form), 0U);
    }
}

// For those who look at the processes of the machine.
TEST_F(ProtectSecretsTest, TheCommandLineShowsAsterisksForThePassword) {
    const StoppedProcess process(
        arguments({"--credential-pwd=" + kPassword, "--encrypt-audio=false"}), ".kzs");
    const std::string shown = process.commandLine();
    const std::string covered =
        "--credential-pwd=" + std::string(kPassword.size(), '*') + std::string(1, '\0');
    EXPECT_NE(shown.find(covered + "--encrypt-audio=false"), std::string::npos);
    EXPECT_NE(shown.find("--content-id=" + files.contentId), std::string::npos);
}

}  // namespace
}  // namespace kz::test
