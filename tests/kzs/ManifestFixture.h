#pragma once

#include <memory>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include "kvl/minidom/Parser.h"
#include "kzs/Manifest.h"
#include "kzs/SlowBase64.h"
#include "kzs/base/Random.h"

namespace kz::test {

/// Manifests with a precision of 100 ms and ids that count from "bootstrap101" on.
class ManifestFixture : public ::testing::Test {
protected:
    void SetUp() override {
        // 9999 * n + 100 leads to the id 101.
        torvo::kzs::setRandomForTests([this] { return 9999 + nextId_++; });
    }
    void TearDown() override { torvo::kzs::setRandomForTests({}); }

    static std::unique_ptr<torvo::kzs::Manifest> newManifest(const std::string& id = "show",
                                                             double duration = 12.5) {
        return std::make_unique<torvo::kzs::Manifest>(4000U, 100.0, 40.0, 1000U, id, "", "recorded",
                                                      duration);
    }

    static std::unique_ptr<torvo::kzs::Manifest> load(const std::string& xml,
                                                      bool loadMedia = true) {
        std::istringstream stream(xml);
        return std::make_unique<torvo::kzs::Manifest>(kvl::minidom::parseStream(stream, false),
                                                      4000U, 100.0, 40.0, 1000U, loadMedia);
    }

    /// The manifest with this inside its root, loaded.
    static std::unique_ptr<torvo::kzs::Manifest> loadRootOf(const std::string& content) {
        return load(kHead + content + kTail);
    }

    static std::string written(const torvo::kzs::Manifest& manifest) {
        std::ostringstream stream;
        manifest.write(stream);
        return stream.str();
    }

    static std::string committed(torvo::kzs::Manifest& manifest) {
        manifest.commit();
        return written(manifest);
    }

    /// One fragment in segment 1, from 0 for `durationMs`, a multiple of 100.
    static void addFragment(torvo::kzs::Rendition& rendition, std::uint32_t durationMs) {
        rendition.bootstrapBuilder.addFragment(1, 1, torvo::kzs::milliseconds(0), durationMs);
    }

    /// The `abst` box of what addFragment leaves.
    static Bytes abst(std::uint32_t durationMs) {
        return hexTable(R"(
              0   0000006a  size
              4   61627374  'abst'
              8   00000000  version, flags
             12   00000001  bootstrap version
             16   00        profile, live, update
             17   000003e8  time scale
             21   0000000000000000  current media time
             29   0000000000000000  time code offset
             37   0000000000  movie identifier, servers, qualities, DRM data, metadata
             42   01        segment run tables
             43   00000019  size
             47   61737274  'asrt'
             51   00000000  version, flags
             55   00        qualities
             56   00000001  entries
             60   00000001  first segment
             64   00000001  fragments
             68   01        fragment run tables
             69   00000025  size
             73   61667274  'afrt'
             77   00000000  version, flags
             81   000003e8  time scale
             85   00        qualities
             86   00000001  entries
             90   00000001  first fragment
             94   0000000000000000  its time
        )") + u32(durationMs);
    }

    static std::string bootstrapText(std::uint32_t durationMs) {
        return slowBase64(abst(durationMs));
    }

    static std::size_t countOf(const std::string& part, const std::string& whole) {
        std::size_t count = 0;
        for (std::size_t at = whole.find(part); at != std::string::npos;
             at = whole.find(part, at + 1)) {
            ++count;
        }
        return count;
    }

    static inline const std::string kHead =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
        "<manifest xmlns=\"http://ns.kzspackager.example/kzd/1.0\">\n";
    static inline const std::string kTail = "</manifest>\n";
    static inline const std::string kFirstChildren =
        "\t<id>\n\t\tshow\n\t</id>\n\t<mimeType>\n\t\t\n\t</mimeType>\n"
        "\t<streamType>\n\t\trecorded\n\t</streamType>\n\t<duration>\n\t\t12.5\n\t</duration>\n";

private:
    int nextId_ = 100;
};

}  // namespace kz::test
