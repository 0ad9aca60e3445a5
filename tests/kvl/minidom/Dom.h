#pragma once

#include <sstream>
#include <string>

#include "kvl/minidom/CharacterData.h"
#include "kvl/minidom/Document.h"
#include "kvl/minidom/Element.h"
#include "kvl/minidom/NodeList.h"
#include "kvl/minidom/Parser.h"
#include "kvl/minidom/Serialiser.h"

namespace kz::test {

inline kvl::minidom::DocumentPtr parse(const std::string& xml, bool keepWhitespace = false) {
    std::istringstream stream(xml);
    return kvl::minidom::parseStream(stream, keepWhitespace);
}

inline std::string serialised(const kvl::minidom::DocumentPtr& document,
                              const std::string& indent = "\t") {
    std::ostringstream stream;
    kvl::minidom::writeDocument(stream, *document, indent);
    return stream.str();
}

/// The tree in one line: elements as {uri}name[attributes](children), texts in quotes, raw
/// markup between bars. Knows nothing of the serialiser.
inline std::string outline(const kvl::minidom::Node& node) {
    using kvl::minidom::NodeType;
    if (node.getNodeType() == NodeType::text) return '"' + node.getNodeValue() + '"';
    if (node.getNodeType() == NodeType::raw) return '|' + node.getNodeValue() + '|';
    std::string line = '{' + node.getNamespaceURI() + '}' + node.getNodeName();
    if (node.getNodeType() == NodeType::attribute) return line + '=' + node.getNodeValue();
    const auto attributes = node.getAttributes();
    if (attributes->getLength() != 0) line += '[';
    for (std::size_t i = 0; i < attributes->getLength(); ++i) {
        line += (i == 0 ? "" : " ") + outline(*attributes->item(i));
    }
    if (attributes->getLength() != 0) line += ']';
    const auto children = node.getChildNodes();
    if (children->getLength() != 0) line += '(';
    for (std::size_t i = 0; i < children->getLength(); ++i) {
        line += (i == 0 ? "" : " ") + outline(*children->item(i));
    }
    if (children->getLength() != 0) line += ')';
    return line;
}

inline std::string outline(const kvl::minidom::DocumentPtr& document) {
    return outline(*document->getDocumentElement());
}

}  // namespace kz::test
