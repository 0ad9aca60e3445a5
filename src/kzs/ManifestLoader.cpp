#include "kzs/ManifestLoader.h"

#include <set>
#include <utility>

#include "kvl/minidom/Document.h"
#include "kzs/Base64.h"
#include "kzs/BootstrapReader.h"
#include "kzs/ManifestElements.h"
#include "kzs/base/ByteSource.h"

namespace torvo::kzs {

namespace {

using kvl::minidom::Element;
using kvl::minidom::Node;
using kvl::minidom::NodePtr;
using kvl::minidom::NodeType;

/// What a first child that isn't text can't give is an empty text.
std::vector<std::uint8_t> decodedContent(const Element& element) {
    const NodePtr child = element.getFirstChild();
    if (!child || child->getNodeType() != NodeType::text) return {};
    return base64Decode(child->getNodeValue());
}

BootstrapInfo parsedBootstrap(const Element& element) {
    const std::vector<std::uint8_t> bytes = decodedContent(element);
    ByteSourceStream stream(bytes);
    BootstrapInfo info;
    readBootstrap(stream, info);
    return info;
}

template <class Predicate>
void removeChildren(Node& parent, Predicate isUnwanted) {
    const auto children = parent.getChildNodes();
    for (std::size_t i = children->getLength(); i > 0; --i) {
        const NodePtr child = children->item(i - 1);
        if (isUnwanted(*child)) parent.removeChild(child);
    }
}

}  // namespace

void ManifestLoader::load() {
    Element& root = *content_.document->getDocumentElement();
    const auto children = root.getChildNodes();
    std::set<std::string> names;
    for (std::size_t i = 0; i < children->getLength(); ++i) {
        const Node& child = *children->item(i);
        if (child.getNodeType() == NodeType::element) names.insert(child.getLocalName());
    }
    if (names.count("bootstrapInfo") != 0) loadBootstraps();
    if (names.count("drmAdditionalHeader") != 0) loadDrmHeaders();
    if (names.count("media") != 0 && content_.loadMedia) loadRenditions();
    removeChildren(root,
                   [](const Node& child) { return child.getNodeType() != NodeType::element; });
}

void ManifestLoader::loadBootstraps() {
    for (const auto& element :
         elementsBelow(*content_.document->getDocumentElement(), "bootstrapInfo")) {
        const std::string id = element->getAttribute("id");
        if (id.empty()) continue;
        BootstrapEntry entry;
        entry.url = element->getAttribute("url");
        if (entry.url.empty()) entry.info = parsedBootstrap(*element);
        content_.bootstraps[id] = std::move(entry);
    }
}

void ManifestLoader::loadDrmHeaders() {
    for (const auto& element :
         elementsBelow(*content_.document->getDocumentElement(), "drmAdditionalHeader")) {
        const std::string id = element->getAttribute("id");
        if (id.empty()) continue;
        DrmHeaderEntry entry;
        entry.url = element->getAttribute("url");
        if (entry.url.empty()) entry.data = decodedContent(*element);
        entry.drmContentId = element->getAttribute("drmContentId");
        content_.drmHeaders[id] = std::move(entry);
    }
}

void ManifestLoader::loadRenditions() {
    for (const auto& element : elementsBelow(*content_.document->getDocumentElement(), "media")) {
        const std::string streamId = element->getAttribute("streamId");
        // On purpose: the first of two elements with one stream id wins, the other stays as it
        // is. Pinned by ManifestLoaderTest.TakesTheFirstOfTwoMediaElementsOfOneStreamId.
        if (streamId.empty() || content_.renditions.count(streamId) != 0) continue;
        Rendition rendition = makeRendition(content_);
        rendition.url = element->getAttribute("url");
        rendition.bootstrapInfoId = element->getAttribute("bootstrapInfoId");
        rendition.drmAdditionalHeaderId = element->getAttribute("drmAdditionalHeaderId");
        rendition.element = element;
        // The old metadata stays: a merge leaves the other renditions as they were.
        removeChildren(*element, [](const Node& child) {
            return child.getNodeType() != NodeType::element || child.getLocalName() != "metadata";
        });
        content_.renditions.emplace(streamId, std::move(rendition));
    }
}

}  // namespace torvo::kzs
