#include <filesystem>
#include <iostream>
#include <string>
#include <utility>
#include <vector>

#include "kzs/Base64.h"
#include "stress/SmallInputs.h"
#include "support/AmfBuilder.h"
#include "support/ProtectionFiles.h"
#include "support/TempDir.h"
#include "support/TestPki.h"

// usage: make_corpus damage FOLDER   small inputs, one of each kind that the program reads
//        make_corpus fuzz FOLDER     the seeds of the fuzz targets, a folder for each
//        make_corpus protect FOLDER  keys and certificates, and settings.xml that names them

namespace {

using namespace kz::stress;
using kz::test::Bytes;
using kz::test::bytesOf;
using kz::test::raw;

using Files = std::vector<std::pair<std::string, Bytes>>;

Files damageFiles() {
    return {{"small.flv", smallFlv()},
            {"small.mp4", smallMovie()},
            {"edits.mp4", smallMovieWithEdits()},
            {"fragmented.mp4", smallFragmentedMovie(true)},
            {"endless.mp4", smallFragmentedMovie(false)},
            {"small.bootstrap", smallBootstrap()},
            {"small.kzx", smallIndex()},
            {"small.kzd", bytesOf(smallManifest())},
            {"small.xml", bytesOf(smallSettings())}};
}

Bytes amfSeed(unsigned kind, const Bytes& value) { return raw({static_cast<int>(kind)}) + value; }

Files amfFiles() {
    const Bytes name = kz::test::amfName("name");
    const Bytes end = raw({0, 0, 9});
    return {{"amf0/number", amfSeed(0, kz::test::amfNumber(1.5))},
            {"amf0/string", amfSeed(1, kz::test::amfString("text"))},
            {"amf0/long_string", amfSeed(1, kz::test::amfLongString("text"))},
            {"amf0/bare_string", amfSeed(2, name)},
            {"amf0/object_begin", amfSeed(3, raw({3}))},
            {"amf0/object_end", amfSeed(4, end)},
            {"amf0/array_begin", amfSeed(5, raw({8, 0, 0, 0, 0}))},
            {"amf0/array_end", amfSeed(0x16, end)},
            {"amf0/strict_array", amfSeed(7, raw({10, 0, 0, 0, 2}))},
            {"amf0/named_object", amfSeed(8, name + raw({3}))},
            {"amf0/named_number", amfSeed(9, name + kz::test::amfNumber(-1))},
            {"amf0/named_string", amfSeed(0x1A, name + kz::test::amfString("text"))}};
}

Files credentialFiles() {
    kz::test::CertificateSpec p256;
    p256.key = kz::test::KeyKind::p256;
    const kz::test::TestKey key = kz::test::testKey(p256.key);
    const Bytes certificate = kz::test::makeCertificate(p256);
    kz::test::PfxSpec noPassword;
    noPassword.password.clear();
    return {{"credentials/certificate", raw({0}) + certificate},
            {"credentials/pfx", raw({1}) + kz::test::makePfx(key, certificate)},
            {"credentials/pfx_without_password",
             raw({2}) + kz::test::makePfx(key, certificate, noPassword)}};
}

Files fuzzFiles() {
    Files files = amfFiles();
    const auto add = [&](const std::string& name, const Bytes& bytes) {
        files.emplace_back(name, bytes);
    };
    for (const auto& [name, bytes] : credentialFiles()) add(name, bytes);
    add("afra/small", smallIndex());
    add("bootstrap/small", smallBootstrap());
    add("find_box/fragment", smallIndex() + smallBootstrap() + smallIndex());
    add("base64/text", bytesOf("AQID-+/="));
    add("base64/padded", bytesOf("AQ=="));
    add("config/small.xml", bytesOf(smallSettings()));
    add("config/attributes.xml", bytesOf("<s a=\"1\"><!--c--><x> 4 </x><![CDATA[t]]></s>"));
    add("manifest/small.kzd", bytesOf(smallManifest()));
    add("flv/small.flv", smallFlv());
    for (const char* target : {"kzm", "package"}) {
        const std::string folder = std::string(target) + "/";
        add(folder + "small.mp4", smallMovie());
        add(folder + "edits.mp4", smallMovieWithEdits());
        add(folder + "fragmented.mp4", smallFragmentedMovie(true));
        add(folder + "endless.mp4", smallFragmentedMovie(false));
    }
    add("package/small.flv", smallFlv());
    return files;
}

/// Settings with the options of a command line.
Bytes settingsOf(const std::vector<std::string>& arguments) {
    std::string out = "<settings>\n";
    for (const std::string& argument : arguments) {
        const std::size_t split = argument.find('=');
        const std::string name = argument.substr(2, split - 2);
        out += "<" + name + ">" + argument.substr(split + 1) + "</" + name + ">\n";
    }
    return bytesOf(out + "</settings>\n");
}

void writeProtection(const std::filesystem::path& folder) {
    const kz::test::ProtectionFiles files;
    std::filesystem::create_directories(folder);
    std::vector<std::string> arguments = files.arguments();
    for (const auto& entry : std::filesystem::directory_iterator(files.folder.path())) {
        std::filesystem::copy_file(entry.path(), folder / entry.path().filename(),
                                   std::filesystem::copy_options::overwrite_existing);
    }
    for (std::string& argument : arguments) {
        const std::size_t at = argument.find(files.folder.path());
        if (at == std::string::npos) continue;
        argument.replace(at, files.folder.path().size(),
                         std::filesystem::absolute(folder).string());
    }
    kz::test::writeFile((folder / "settings.xml").string(), settingsOf(arguments));
}

}  // namespace

int main(int argc, char** argv) {
    const std::string kind = argc == 3 ? argv[1] : "";
    if (kind == "protect") {
        writeProtection(argv[2]);
        return 0;
    }
    if (kind != "damage" && kind != "fuzz") {
        std::cerr << "usage: make_corpus damage|fuzz|protect FOLDER\n";
        return 2;
    }
    for (const auto& [name, bytes] : kind == "damage" ? damageFiles() : fuzzFiles()) {
        const std::filesystem::path path = std::filesystem::path(argv[2]) / name;
        std::filesystem::create_directories(path.parent_path());
        kz::test::writeFile(path.string(), bytes);
    }
    return 0;
}
