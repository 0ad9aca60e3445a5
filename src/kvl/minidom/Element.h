#pragma once

#include "kvl/minidom/Node.h"

namespace kvl::minidom {

/// An attribute; its value is the node value.
class Attribute : public Node {};

class Element : public Node {
public:
    /// The same as the node name.
    virtual std::string getTagName() const = 0;
    /// The value of the first attribute with that local name, in any namespace; empty if none.
    virtual std::string getAttribute(const std::string& localName) const = 0;
    /// Sets an attribute of no namespace. One of that name keeps its place in the order.
    virtual void setAttribute(const std::string& name, const std::string& value) = 0;
    /// The same with an existing attribute. Returns the one that it replaced, or null.
    virtual AttributePtr setAttributeNode(const AttributePtr& attribute) = 0;
    /// All elements below this one, depth first in document order, this one left out. "*"
    /// stands for any URI or any name.
    virtual std::shared_ptr<NodeList> getElementsByTagNameNS(
        const std::string& namespaceUri, const std::string& localName) const = 0;
};

}  // namespace kvl::minidom
