#include "kzs/Manifest.h"

#include <algorithm>
#include <limits>
#include <locale>
#include <sstream>
#include <stdexcept>
#include <utility>

#include "kvl/minidom/CharacterData.h"
#include "kvl/minidom/Document.h"
#include "kvl/minidom/Element.h"
#include "kvl/minidom/EscapedCopy.h"
#include "kvl/minidom/Serialiser.h"
#include "kzs/ManifestCommitter.h"
#include "kzs/ManifestLoader.h"
#include "kzs/base/Clock.h"
#include "kzs/base/Random.h"

namespace torvo::kzs {

namespace {

/// With all 17 digits: 4.026 comes out as 4.0259999999999998.
std::string fullPrecision(double number) {
    std::ostringstream text;
    text.exceptions(std::ios::failbit | std::ios::badbit);
    text.imbue(std::locale::classic());
    text.precision(std::numeric_limits<double>::max_digits10);
    text << number;
    return text.str();
}

void appendTextElement(kvl::minidom::Document& document, const char* name,
                       const std::string& text) {
    const auto element = document.createElementNS(kManifestNamespace, name);
    element->appendChild(document.createTextNode(text));
    document.getDocumentElement()->appendChild(element);
}

void seedIds() { seedRandom(static_cast<unsigned>(fileTimeSeconds())); }

}  // namespace

Manifest::Manifest(std::uint32_t fragmentDuration, double durationPrecision, double frameDuration,
                   std::uint32_t allowedDrift, const std::string& id, const std::string& mimeType,
                   const std::string& streamType, double duration) {
    seedIds();
    content_.document = kvl::minidom::createDocument(kManifestNamespace, "manifest");
    content_.fragmentDuration = fragmentDuration;
    content_.durationPrecision = durationPrecision;
    content_.frameDuration = frameDuration;
    content_.allowedDrift = allowedDrift;
    appendTextElement(*content_.document, "id", id);
    appendTextElement(*content_.document, "mimeType", mimeType);
    appendTextElement(*content_.document, "streamType", streamType);
    appendTextElement(*content_.document, "duration", fullPrecision(duration));
}

Manifest::Manifest(kvl::minidom::DocumentPtr document, std::uint32_t fragmentDuration,
                   double durationPrecision, double frameDuration, std::uint32_t allowedDrift,
                   bool loadMedia) {
    seedIds();
    content_.document = std::move(document);
    content_.fragmentDuration = fragmentDuration;
    content_.durationPrecision = durationPrecision;
    content_.frameDuration = frameDuration;
    content_.allowedDrift = allowedDrift;
    content_.loadMedia = loadMedia;
    ManifestLoader(content_).load();
}

Rendition& Manifest::addMedia(const std::string& streamId, const std::string& url, double bitrate) {
    // On purpose: the new rendition has no element even where the file has one of that stream
    // id, so a second element stands beside the old one after the commit.
    // Pinned by ManifestMergeTest.LeavesTwoMediaElementsOfOneStreamId.
    Rendition& rendition = content_.renditions[streamId];
    rendition = makeRendition(content_);
    rendition.url = url;
    rendition.bitrate = bitrate;
    return rendition;
}

void Manifest::updateDRMMetadata(const std::vector<std::uint8_t>& header, const std::string& url) {
    std::string sharedId;
    for (auto& [streamId, rendition] : content_.renditions) {
        if (rendition.drmAdditionalHeaderId.empty()) {
            rendition.drmMetadata = header;
            if (!url.empty() && !rendition.drmUrl.empty()) rendition.drmUrl = url;
        } else if (sharedId.empty()) {
            sharedId = rendition.drmAdditionalHeaderId;
        } else {
            rendition.drmAdditionalHeaderId = sharedId;
        }
    }
    // On purpose: without a header in use the file gets none, since loading doesn't restore the
    // content ids. Pinned by ManifestDrmTest.GivesNoHeaderToAManifestWithoutOne.
    if (sharedId.empty()) return;

    auto& headers = content_.drmHeaders;
    for (auto entry = headers.begin(); entry != headers.end();) {
        entry = entry->first == sharedId ? std::next(entry) : headers.erase(entry);
    }
    if (headers.empty()) {
        throw std::logic_error("updateDRMMetadata error: DRM data not found: Id - : " + sharedId);
    }
    DrmHeaderEntry& kept = headers.begin()->second;
    kept.data = header;
    if (!kept.url.empty() && !url.empty()) kept.url = url;
    kept.dirty = true;
}

bool Manifest::hasExternalDrmHeader() const {
    return std::any_of(content_.drmHeaders.begin(), content_.drmHeaders.end(),
                       [](const auto& entry) { return !entry.second.url.empty(); });
}

void Manifest::commit() { ManifestCommitter(content_).commit(); }

void Manifest::write(std::ostream& stream) const {
    // The serialiser writes values as they are, and names of files may hold anything.
    const auto escaped = kvl::minidom::escapedCopy(*content_.document);
    kvl::minidom::writeDocument(stream, *escaped, "\t");
}

}  // namespace torvo::kzs
