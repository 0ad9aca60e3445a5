// Turns segment files back into a plain FLV file. Holds the private key of the license server and
// nothing else of the packager's: all that it needs is in the segments. docs/protection.md tells
// the formats.

#include <fstream>
#include <iostream>
#include <stdexcept>
#include <string>
#include <vector>

#include "decrypt/LicenseServer.h"
#include "decrypt/Segment.h"
#include "decrypt/TagDecryption.h"

namespace {

constexpr const char* kUsage =
    "usage: kzsdecrypt [--authority=ca.pem] server-key.pem out.flv segment.kzs...";

struct Arguments {
    std::string authority;
    std::string key;
    std::string output;
    std::vector<std::string> segments;
};

Arguments parse(int count, char** values) {
    Arguments arguments;
    std::vector<std::string> words(values + 1, values + count);
    const std::string authority = "--authority=";
    if (!words.empty() && words[0].rfind(authority, 0) == 0) {
        arguments.authority = words[0].substr(authority.size());
        words.erase(words.begin());
    }
    if (words.size() < 3) throw std::runtime_error(kUsage);
    arguments.key = words[0];
    arguments.output = words[1];
    arguments.segments.assign(words.begin() + 2, words.end());
    return arguments;
}

void write(std::ostream& out, const decrypt::Bytes& bytes) {
    out.write(reinterpret_cast<const char*>(bytes.data()),
              static_cast<std::streamsize>(bytes.size()));
}

void decryptAll(const Arguments& arguments) {
    std::ofstream out;
    out.exceptions(std::ios::failbit | std::ios::badbit);
    out.open(arguments.output, std::ios::binary | std::ios::trunc);
    write(out, {'F', 'L', 'V', 1, 5, 0, 0, 0, 9, 0, 0, 0, 0});
    for (const std::string& path : arguments.segments) {
        const decrypt::Bytes segment = decrypt::readFile(path);
        const std::string text = decrypt::metadataTextOf(segment);
        decrypt::License license;
        if (!text.empty()) {
            license = decrypt::openMetadata(decrypt::decodeBase64(text), arguments.key,
                                            arguments.authority);
            std::cout << path << ": content \"" << license.contentId << "\", license from "
                      << license.serverUrl << '\n';
        }
        decrypt::forEachTag(segment, [&](const decrypt::Bytes& tag) {
            write(out, decrypt::decryptTag(tag, license.contentKey));
        });
    }
    out.close();
}

}  // namespace

int main(int argc, char** argv) {
    try {
        decryptAll(parse(argc, argv));
        return 0;
    } catch (const std::exception& failure) {
        std::cerr << "kzsdecrypt: " << failure.what() << '\n';
        return 1;
    }
}
