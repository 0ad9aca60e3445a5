#pragma once

#include "kvl/minidom/Node.h"

namespace kvl::minidom {

/// The whole of one XML text: it owns the root element and makes nodes for the tree.
class Document : public Node {
public:
    /// Null in a document whose text has no element yet.
    virtual ElementPtr getDocumentElement() const = 0;
    /// A new element, not yet in the tree.
    virtual ElementPtr createElementNS(const std::string& namespaceUri,
                                       const std::string& qualifiedName) = 0;
    /// A new text node, not yet in the tree.
    virtual TextPtr createTextNode(const std::string& text) = 0;
};

/// A new document with its root element.
DocumentPtr createDocument(const std::string& namespaceUri, const std::string& qualifiedName);

}  // namespace kvl::minidom
