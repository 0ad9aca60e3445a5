#pragma once

#include <memory>
#include <string>

namespace kvl::minidom {

class Attribute;
class Document;
class Element;
class NamedNodeMap;
class Node;
class NodeList;
class Text;

using AttributePtr = std::shared_ptr<Attribute>;
using DocumentPtr = std::shared_ptr<Document>;
using ElementPtr = std::shared_ptr<Element>;
using NodePtr = std::shared_ptr<Node>;
using TextPtr = std::shared_ptr<Text>;

enum class NodeType {
    raw = 0,  ///< markup kept as the text it was, a comment for example
    element = 1,
    attribute = 2,
    text = 3,
    document = 9,
};

/// Whatever the tree hands out, by shared pointer.
class DOMObject {
public:
    DOMObject() = default;
    DOMObject(const DOMObject&) = delete;
    DOMObject& operator=(const DOMObject&) = delete;

    virtual ~DOMObject() = default;
};

/// A node of the tree.
///
/// A parent owns its children; the ways up (parent, owner document) don't own, and give null
/// once what they lead to is gone. Operations that take a child throw DOMException with code 8
/// where the child that is named isn't there; nothing else is checked.
class Node : public DOMObject {
public:
    virtual DocumentPtr getOwnerDocument() const = 0;
    virtual NodePtr getParentNode() const = 0;
    virtual NodeType getNodeType() const = 0;
    /// The qualified name, as it is written.
    virtual std::string getNodeName() const = 0;
    /// The text of character data and attributes; empty for all others.
    virtual std::string getNodeValue() const = 0;
    virtual std::string getNamespaceURI() const = 0;
    virtual std::string getPrefix() const = 0;
    virtual std::string getLocalName() const = 0;
    /// A copy of the child list: later changes of the tree don't show in it.
    virtual std::shared_ptr<NodeList> getChildNodes() const = 0;
    /// Null if there are none.
    virtual NodePtr getFirstChild() const = 0;
    virtual NodePtr getLastChild() const = 0;
    /// A copy of the attribute list; null except on elements.
    virtual std::shared_ptr<NamedNodeMap> getAttributes() const = 0;
    /// Puts `newChild` in front of `refChild`, which must be a child: null isn't accepted.
    /// Returns `newChild`.
    virtual NodePtr insertBefore(const NodePtr& newChild, const NodePtr& refChild) = 0;
    /// Puts `newChild` in the place of `oldChild`. Returns `newChild`.
    virtual NodePtr replaceChild(const NodePtr& newChild, const NodePtr& oldChild) = 0;
    /// Takes `oldChild` off and returns it.
    virtual NodePtr removeChild(const NodePtr& oldChild) = 0;
    /// Puts `newChild` behind all others, taking it off first if it is a child already.
    /// Returns `newChild`.
    virtual NodePtr appendChild(const NodePtr& newChild) = 0;
    /// Takes the whole tree below this node apart.
    virtual void dispose() = 0;
};

}  // namespace kvl::minidom
