#include "cli/ProtectFixture.h"

#include <algorithm>
#include <filesystem>
#include <stdexcept>

#include <openssl/evp.h>

#include "support/TestLicenseServer.h"

namespace kz::test {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kFilterHeader = 7;  // count, "SE" with its zero, length of the parameters
constexpr std::size_t kParameters = 17;   // flag and IV

/// The size of the codec header of a tag, by its first body byte.
std::size_t codecHeaderSize(const Bytes& tag) {
    const int first = tag.at(kTagHeader);
    if ((tag[0] & 0x1F) == 9) return (first & 0x0F) == 7 ? 5 : 1;
    return (first & 0xF0) == 0xA0 || (first & 0xF0) == 0xD0 ? 2 : 1;
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

std::string keyOf(const std::string& argument) { return argument.substr(0, argument.find('=')); }

std::size_t findIn(const Bytes& bytes, const Bytes& part) {
    const auto at = std::search(bytes.begin(), bytes.end(), part.begin(), part.end());
    if (at == bytes.end()) throw std::runtime_error("not found: " + part.str());
    return static_cast<std::size_t>(at - bytes.begin());
}

std::size_t loadSize(const Bytes& bytes, std::size_t at, std::size_t width) {
    std::size_t size = 0;
    for (const std::uint8_t byte : bytes.slice(at, width)) size = size * 256 + byte;
    return size;
}

}  // namespace

std::string media(const std::string& name) {
    return std::string(KZ_TEST_DATA_DIR) + "/media/" + name;
}

bool isEncrypted(const Bytes& tag) { return (tag.at(0) & 0x20) != 0; }

Bytes ivOf(const Bytes& tag) {
    return tag.slice(kTagHeader + codecHeaderSize(tag) + kFilterHeader + 1, 16);
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

Bytes sampleOf(const Bytes& tag) {
    const std::size_t start = kTagHeader + codecHeaderSize(tag);
    return tag.slice(start, tag.size() - start - 4);
}

std::string ManifestElement::attribute(const std::string& name) const {
    const std::string opening = " " + name + "=\"";
    const std::size_t at = attributes.find(opening);
    if (at == std::string::npos) return "";
    const std::size_t start = at + opening.size();
    return attributes.substr(start, attributes.find('"', start) - start);
}

std::vector<ManifestElement> elementsOf(const std::string& manifest, const std::string& name) {
    std::vector<ManifestElement> elements;
    const std::string opening = "<" + name;
    for (std::size_t at = manifest.find(opening); at != std::string::npos;
         at = manifest.find(opening, at + 1)) {
        const std::size_t start = at + opening.size();
        const std::size_t end = manifest.find('>', start);
        ManifestElement element;
        element.attributes = manifest.substr(start, end - start);
        for (std::size_t i = end + 1; i < manifest.size() && manifest[i] != '<'; ++i) {
            if (manifest[i] > ' ') element.text += manifest[i];
        }
        elements.push_back(element);
    }
    return elements;
}

Bytes fromBase64(const std::string& text) {
    Bytes bytes(text.size());
    const int size =
        EVP_DecodeBlock(bytes.data(), bytesOf(text).data(), static_cast<int>(text.size()));
    if (size < 0) throw std::runtime_error("not base64: " + text);
    const auto fill = static_cast<std::size_t>(std::count(text.begin(), text.end(), '='));
    return bytes.cutTo(static_cast<std::size_t>(size) - fill);
}

std::string toBase64(const Bytes& bytes) {
    Bytes encoded((bytes.size() + 2) / 3 * 4 + 1);
    const int size = EVP_EncodeBlock(encoded.data(), bytes.data(), static_cast<int>(bytes.size()));
    return encoded.cutTo(static_cast<std::size_t>(size)).str();
}

Bytes metadataInHeader(const Bytes& header) {
    // A property of an object: its name with its size, then a short or a long string.
    const Bytes name = hex("0008") + text("Metadata");
    const std::size_t type = findIn(header, name) + name.size();
    const std::size_t width = header.at(type) == 0x02 ? 2 : 4;
    const std::size_t size = loadSize(header, type + 1, width);
    return fromBase64(header.slice(type + 1 + width, size).str());
}

Bytes metadataInSegment(const Bytes& segment) {
    const std::size_t type = findIn(segment, text("flxs"));
    const std::size_t size = loadSize(segment, type - 4, 4);
    EXPECT_EQ(segment.at(type - 4 + size - 1), 0);
    return fromBase64(segment.slice(type + 4, size - 9).str());
}

void ProtectFixture::package(const std::string& out, std::vector<std::string> arguments) {
    arguments.push_back("--output-path=" + (work / out));
    const ProcessResult result = packager(arguments);
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(result.err, "");
}

std::vector<std::string> ProtectFixture::withProtection(
    const std::string& input, const std::vector<std::string>& more) const {
    std::vector<std::string> arguments = files.arguments();
    if (!input.empty()) arguments.push_back("--input-file=" + media(input));
    for (const std::string& argument : more) {
        const auto same =
            std::find_if(arguments.begin(), arguments.end(),
                         [&](const std::string& other) { return keyOf(other) == keyOf(argument); });
        if (same == arguments.end()) {
            arguments.push_back(argument);
        } else {
            *same = argument;
        }
    }
    return arguments;
}

std::vector<Bytes> ProtectFixture::protectedTags(const std::string& input,
                                                 const std::vector<std::string>& more) {
    package("protected", withProtection(input, more));
    const Presentation presentation = read("protected", input);
    EXPECT_EQ(inconsistencies(presentation), std::vector<std::string>());
    return tagImages(presentation);
}

std::vector<Bytes> ProtectFixture::clearTags(const std::string& input) {
    package("clear", {"--input-file=" + media(input)});
    return tagImages(read("clear", input));
}

Presentation ProtectFixture::read(const std::string& out, const std::string& input) const {
    return readPresentation(work / out, fs::path(input).stem().string());
}

void ProtectFixture::expectSame(const std::vector<Bytes>& tags, const std::vector<Bytes>& clear) {
    ASSERT_EQ(tags.size(), clear.size());
    for (std::size_t i = 0; i < tags.size(); ++i) {
        EXPECT_TRUE(sizesAddUp(tags[i])) << i;
        ASSERT_EQ(clearTag(tags[i], files.contentKey), clear[i]) << i;
        if (!isEncrypted(tags[i])) continue;
        EXPECT_TRUE(usedIvs.insert(ivOf(tags[i])).second) << i;
    }
}

void ProtectFixture::expectEncrypted(const std::vector<Bytes>& tags,
                                     const std::vector<Bytes>& clear,
                                     const std::function<bool(const Bytes&)>& wanted) {
    ASSERT_EQ(tags.size(), clear.size());
    for (std::size_t i = 0; i < tags.size(); ++i) {
        const bool expected = !isSequenceHeader(clear[i]) && wanted(clear[i]);
        ASSERT_EQ(isEncrypted(tags[i]), expected) << "tag " << i;
    }
}

std::vector<std::string> ProtectFixture::outputs(const std::string& out) const {
    std::vector<std::string> names;
    if (!fs::exists(work / out)) return names;
    for (const auto& entry : fs::directory_iterator(work / out)) {
        names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
}

}  // namespace kz::test
