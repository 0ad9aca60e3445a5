#include "kzs/Manifest.h"

#include <exception>
#include <sstream>
#include <string>

#include "fuzz/FuzzTarget.h"
#include "kvl/minidom/Parser.h"

using namespace torvo::kzs;

namespace {

constexpr std::uint32_t kFragmentMs = 4000;
constexpr double kPrecisionMs = 100;
constexpr double kFrameMs = 40;
constexpr std::uint32_t kDriftMs = 1000;

kvl::minidom::DocumentPtr parse(const std::string& text, bool keepWhitespace) {
    std::istringstream stream(text);
    return kvl::minidom::parseStream(stream, keepWhitespace);
}

void fill(Rendition& rendition) {
    rendition.metadata = {2, 0, 1, 'x'};
    rendition.bootstrapBuilder.addFragment(1, 1, Timestamp{0, 1000}, kFragmentMs);
    rendition.bootstrapBuilder.markEnd();
}

std::string written(const Manifest& manifest) {
    std::ostringstream out;
    manifest.write(out);
    return out.str();
}

/// What a run does that adds a rendition, or one that renews the protection.
void edit(const std::string& text, bool loadMedia) {
    std::string result;
    try {
        Manifest manifest(parse(text, false), kFragmentMs, kPrecisionMs, kFrameMs, kDriftMs,
                          loadMedia);
        if (loadMedia) {
            manifest.updateDRMMetadata({1, 2, 3}, "");
        } else {
            fill(manifest.addMedia("added", "added", 300));
        }
        manifest.commit();
        result = written(manifest);
    } catch (const std::exception&) {
        return;
    }
    try {
        parse(result, false);
    } catch (const std::exception&) {
        kz::fuzz::require(false, "a manifest that was written can be read");
    }
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(data, data + size);
    edit(text, false);
    edit(text, true);
    return 0;
}
