#include "kzs/ManifestCommitter.h"

#include <algorithm>
#include <locale>
#include <sstream>
#include <stdexcept>
#include <utility>

#include "kvl/minidom/CharacterData.h"
#include "kvl/minidom/Document.h"
#include "kzs/Base64.h"
#include "kzs/BootstrapWriter.h"
#include "kzs/ManifestElements.h"
#include "kzs/base/Random.h"

namespace torvo::kzs {

namespace {

using kvl::minidom::Element;
using kvl::minidom::ElementPtr;
using kvl::minidom::NodePtr;
using kvl::minidom::NodeType;
using kvl::minidom::Text;

/// On purpose: six digits, so that a million and a half is "1.5e+06".
/// Pinned by ManifestTest.WritesTheBitrateInSixDigits.
std::string shortPrecision(double number) {
    std::ostringstream text;
    text.exceptions(std::ios::failbit | std::ios::badbit);
    text.imbue(std::locale::classic());
    text << number;
    return text.str();
}

/// `prefix` and a random number; the next free one if that id is taken.
template <class Entry>
std::string newId(const char* prefix, const std::map<std::string, Entry>& taken) {
    constexpr int kIdRange = 9999;
    int number = nextRandom() % kIdRange + 1;
    // On purpose: a collision may lead past 9999.
    // Pinned by ManifestTest.PassesTheEndOfTheRangeWhenAnIdIsTaken.
    while (taken.count(prefix + std::to_string(number)) != 0) ++number;
    return prefix + std::to_string(number);
}

bool hasBootstrap(const Rendition& rendition) {
    return !rendition.bootstrapUrl.empty() ||
           !rendition.bootstrap().segmentRunTables.front().entries.empty();
}

}  // namespace

Element& ManifestCommitter::root() const { return *content_.document->getDocumentElement(); }

ElementPtr ManifestCommitter::makeElement(const char* name) const {
    return content_.document->createElementNS(kManifestNamespace, name);
}

void ManifestCommitter::commit() {
    for (auto& [streamId, rendition] : content_.renditions) {
        const std::string bootstrapId = commitBootstrap(rendition);
        const std::string drmHeaderId = commitDrmHeader(rendition);
        commitMedia(streamId, rendition, bootstrapId, drmHeaderId);
    }
    removeDroppedDrmHeaders();
}

std::string ManifestCommitter::commitBootstrap(const Rendition& rendition) {
    if (!hasBootstrap(rendition)) return {};
    // On purpose: renditions with equal bootstraps share one element.
    // Pinned by ManifestMergeTest.SharesOneElementForEqualBootstraps.
    const auto equal = std::find_if(content_.bootstraps.begin(), content_.bootstraps.end(),
                                    [&](const auto& candidate) {
                                        return candidate.second.url == rendition.bootstrapUrl &&
                                               candidate.second.info == rendition.bootstrap();
                                    });
    return equal != content_.bootstraps.end() ? equal->first : addBootstrap(rendition);
}

std::string ManifestCommitter::addBootstrap(const Rendition& rendition) {
    const ElementPtr element = makeElement("bootstrapInfo");
    // On purpose: the only profile there is.
    // Pinned by ManifestTest.PutsBootstrapHeaderAndMediaBehindThem.
    element->setAttribute("profile", "named");
    if (rendition.bootstrapUrl.empty()) {
        setText(*element, base64Encode(serialiseBootstrap(rendition.bootstrap(), false)));
    } else {
        element->setAttribute("url", rendition.bootstrapUrl);
    }
    root().appendChild(element);
    std::string id = newId("bootstrap", content_.bootstraps);
    element->setAttribute("id", id);
    content_.bootstraps[id] = {rendition.bootstrapUrl, rendition.bootstrap()};
    return id;
}

std::string ManifestCommitter::commitDrmHeader(const Rendition& rendition) {
    const std::string& id = rendition.drmAdditionalHeaderId;
    if (id.empty()) {
        return rendition.drmContentId.empty() ? std::string() : addDrmHeader(rendition);
    }
    const auto entry = content_.drmHeaders.find(id);
    if (entry == content_.drmHeaders.end()) {
        throw std::logic_error("Invalid drmAdditionalHeaderId : " + id);
    }
    if (entry->second.dirty) rewriteDrmHeader(id, entry->second);
    return id;
}

/// On purpose: always a new element, even where an equal header is there already.
/// Pinned by ManifestDrmTest.NeverSharesAProtectionHeader.
std::string ManifestCommitter::addDrmHeader(const Rendition& rendition) {
    const ElementPtr element = makeElement("drmAdditionalHeader");
    if (rendition.drmUrl.empty()) {
        setText(*element, base64Encode(rendition.drmMetadata));
    } else {
        element->setAttribute("url", rendition.drmUrl);
    }
    // On purpose: always there, even if it were empty.
    // Pinned by ManifestTest.GivesAContentIdAloneAHeaderWithoutContent.
    element->setAttribute("drmContentId", rendition.drmContentId);
    root().appendChild(element);
    std::string id = newId("drmMetadata", content_.drmHeaders);
    element->setAttribute("id", id);
    content_.drmHeaders[id] = {rendition.drmMetadata, rendition.drmUrl, rendition.drmContentId,
                               false};
    return id;
}

void ManifestCommitter::rewriteDrmHeader(const std::string& id, DrmHeaderEntry& entry) {
    for (const ElementPtr& element : elementsBelow(root(), "drmAdditionalHeader")) {
        if (element->getAttribute("id") != id) continue;
        if (entry.url.empty()) {
            setText(*element, base64Encode(entry.data));
        } else {
            element->setAttribute("url", entry.url);
        }
    }
    entry.dirty = false;
}

/// Replaces the first text of the element, or adds one.
void ManifestCommitter::setText(Element& element, const std::string& text) const {
    const auto children = element.getChildNodes();
    for (std::size_t i = 0; i < children->getLength(); ++i) {
        const auto present = std::dynamic_pointer_cast<Text>(children->item(i));
        if (!present) continue;
        present->setData(text);
        return;
    }
    element.appendChild(content_.document->createTextNode(text));
}

void ManifestCommitter::commitMedia(const std::string& streamId, Rendition& rendition,
                                    const std::string& bootstrapId,
                                    const std::string& drmHeaderId) {
    const bool isNew = !rendition.element;
    if (isNew) rendition.element = makeElement("media");
    Element& media = *rendition.element;
    media.setAttribute("streamId", streamId);
    if (!rendition.url.empty()) media.setAttribute("url", rendition.url);
    if (rendition.bitrate != 0.0) media.setAttribute("bitrate", shortPrecision(rendition.bitrate));
    if (!bootstrapId.empty()) media.setAttribute("bootstrapInfoId", bootstrapId);
    if (!drmHeaderId.empty()) media.setAttribute("drmAdditionalHeaderId", drmHeaderId);
    // On purpose: metadata that is there is kept, whatever the rendition has.
    // Pinned by ManifestMergeTest.KeepsTheMetadataOfLoadedRenditions.
    if (elementsBelow(media, "metadata").empty()) {
        const ElementPtr metadata = makeElement("metadata");
        setText(*metadata, base64Encode(rendition.metadata));
        media.appendChild(metadata);
    }
    if (isNew) root().appendChild(rendition.element);
}

/// Those that an update of the protection header left behind. On purpose elements of
/// `bootstrapInfo` stay, even if nothing refers to them any more.
/// Pinned by ManifestMergeTest.KeepsBootstrapsThatNobodyRefersTo.
void ManifestCommitter::removeDroppedDrmHeaders() {
    for (const ElementPtr& element : elementsBelow(root(), "drmAdditionalHeader")) {
        if (content_.drmHeaders.count(element->getAttribute("id")) != 0) continue;
        if (const NodePtr parent = element->getParentNode()) parent->removeChild(element);
    }
}

}  // namespace torvo::kzs
