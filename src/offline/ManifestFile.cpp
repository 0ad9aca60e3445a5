#include "offline/ManifestFile.h"

#include <locale>
#include <sstream>

#include "kvl/minidom/ParseExceptions.h"
#include "kvl/minidom/Parser.h"
#include "offline/FragmentTiming.h"
#include "offline/InputPath.h"
#include "offline/OfflineException.h"
#include "offline/OutputFile.h"

namespace torvo::offline {
namespace {

kvl::minidom::DocumentPtr parseManifest(const std::string& path) {
    requireFile(path);
    try {
        constexpr bool kKeepWhitespace = false;
        return kvl::minidom::parseFile(path, kKeepWhitespace);
    } catch (const kvl::minidom::XMLParseException&) {
        throw InvalidInputFileException(path);
    }
}

}  // namespace

std::unique_ptr<kzs::Manifest> makeManifest(const OptionMap& options, const std::string& id,
                                            double durationSeconds) {
    const FragmentTiming timing = fragmentTimingOf(options);
    const std::string& path = textOf(options, "manifest-file");
    if (path.empty()) {
        return std::make_unique<kzs::Manifest>(
            timing.fragmentDuration, timing.durationPrecision, timing.frameDuration,
            timing.allowedDrift, id, /*mimeType=*/"", /*streamType=*/"recorded", durationSeconds);
    }
    // On purpose: a manifest that was there keeps its id and its duration.
    // Pinned by ManifestFileTest.ALoadedManifestKeepsItsIdAndDuration.
    return std::make_unique<kzs::Manifest>(parseManifest(path), timing.fragmentDuration,
                                           timing.durationPrecision, timing.frameDuration,
                                           timing.allowedDrift, /*loadMedia=*/true);
}

void writeManifestFile(const kzs::Manifest& manifest, const std::string& path) {
    std::ostringstream stream;
    stream.imbue(std::locale::classic());
    stream.exceptions(std::ios::failbit | std::ios::badbit);
    manifest.write(stream);
    // All of it is in memory before the file that is there is emptied.
    const std::string text = stream.str();
    OutputFile file(path);
    file.write(text);
    file.close();
}

}  // namespace torvo::offline
