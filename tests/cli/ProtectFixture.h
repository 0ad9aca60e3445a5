#pragma once

#include <functional>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "cli/CommandLine.h"
#include "support/Presentation.h"
#include "support/ProtectionFiles.h"

namespace kz::test {

constexpr std::size_t kTagHeader = 11;

/// The path of a clip of the test media.
std::string media(const std::string& name);

bool isEncrypted(const Bytes& tag);
/// The IV of an encrypted tag.
Bytes ivOf(const Bytes& tag);
/// An AVC or AAC sequence header.
bool isSequenceHeader(const Bytes& tag);
/// The time of a tag in milliseconds.
std::uint32_t timeOf(const Bytes& tag);
/// The bytes of a clear tag behind its codec header.
Bytes sampleOf(const Bytes& tag);

/// An element of a manifest: what stands between the brackets and its text without blanks.
struct ManifestElement {
    std::string attributes;
    std::string text;

    /// The value of an attribute; empty when it isn't there.
    std::string attribute(const std::string& name) const;
};

/// All elements of a name, in the order of the manifest.
std::vector<ManifestElement> elementsOf(const std::string& manifest, const std::string& name);

/// The protection metadata that a DRM additional header carries.
Bytes metadataInHeader(const Bytes& header);
/// The protection metadata that the first sample description of a segment carries.
Bytes metadataInSegment(const Bytes& segment);
/// Base64 of the standard alphabet.
Bytes fromBase64(const std::string& text);
std::string toBase64(const Bytes& bytes);

/// Protected and clear runs of the program, and what they must have in common.
class ProtectFixture : public ::testing::Test {
protected:
    /// Packages into the folder `out` of its own; the run must succeed and be silent.
    void package(const std::string& out, std::vector<std::string> arguments);
    /// The arguments of a protected run. One of `more` takes the place of one with the same key.
    std::vector<std::string> withProtection(const std::string& input,
                                            const std::vector<std::string>& more = {}) const;
    /// The tags of a protected run; its files must agree with each other.
    std::vector<Bytes> protectedTags(const std::string& input,
                                     const std::vector<std::string>& more = {});
    std::vector<Bytes> clearTags(const std::string& input);
    Presentation read(const std::string& out, const std::string& input) const;
    /// Decrypts all tags and compares; sizes must be right, and no IV may be in `usedIvs`.
    void expectSame(const std::vector<Bytes>& tags, const std::vector<Bytes>& clear);
    /// Which tags are encrypted must be what `wanted` says of the clear ones.
    static void expectEncrypted(const std::vector<Bytes>& tags, const std::vector<Bytes>& clear,
                                const std::function<bool(const Bytes&)>& wanted);
    /// The names of the files in an output folder, sorted.
    std::vector<std::string> outputs(const std::string& out) const;

    ProtectionFiles files;
    TempDir work;
    std::set<Bytes> usedIvs;  ///< of all runs of the test: they share a key
};

}  // namespace kz::test
