#pragma once

#include <memory>
#include <string>
#include <vector>

#include "kvl/minidom/Node.h"
#include "kvl/minidom/NodeList.h"

namespace kvl::minidom {

/// Base of all implementation classes: objects with an identity, never copied.
class DOMObjectImpl {
public:
    DOMObjectImpl(const DOMObjectImpl&) = delete;
    DOMObjectImpl& operator=(const DOMObjectImpl&) = delete;

protected:
    DOMObjectImpl() = default;
    ~DOMObjectImpl() = default;
};

/// What all nodes hold, and the work on the child list.
class NodeImpl : public DOMObjectImpl, public std::enable_shared_from_this<NodeImpl> {
public:
    virtual ~NodeImpl() = default;

    /// The implementation behind `node`; throws DOMException with code 8 for null.
    static NodeImpl& of(const NodePtr& node);

    /// A shared pointer to this node, as its interface.
    virtual NodePtr asNode() = 0;

    const std::vector<NodePtr>& children() const { return children_; }
    void setParent(const NodePtr& parent) { parent_ = parent; }

protected:
    NodeImpl(std::weak_ptr<Document> ownerDocument, NodeType nodeType, std::string qualifiedName,
             std::string namespaceUri);

    NodePtr insertChild(const NodePtr& newChild, const NodePtr& refChild);
    NodePtr exchangeChild(const NodePtr& newChild, const NodePtr& oldChild);
    NodePtr takeChild(const NodePtr& oldChild);
    NodePtr addChild(const NodePtr& newChild);
    void disposeOfChildren();

    std::weak_ptr<Document> ownerDocument_;
    NodeType nodeType_;
    std::string nodeName_;
    std::string namespaceUri_;
    std::string prefix_;
    std::string localName_;
    std::weak_ptr<Node> parent_;
    std::vector<NodePtr> children_;

private:
    std::vector<NodePtr>::iterator find(const NodePtr& child);
    void removeIfChild(const NodePtr& child);
};

/// A list of any kind of node, copied when it is made. `L` is the interface.
template <class L>
class ListImplT final : public L, public DOMObjectImpl {
public:
    explicit ListImplT(std::vector<NodePtr> nodes) : nodes_(std::move(nodes)) {}

    NodePtr item(std::size_t index) const override {
        return index < nodes_.size() ? nodes_[index] : nullptr;
    }
    std::size_t getLength() const override { return nodes_.size(); }

private:
    std::vector<NodePtr> nodes_;
};

using NodeListImpl = ListImplT<NodeList>;
using NamedNodeMapImpl = ListImplT<NamedNodeMap>;

/// The operations of `Node` over NodeImpl, for the interface `I` that derives from it.
template <class I>
class NodeImplT : public I, public NodeImpl {
public:
    DocumentPtr getOwnerDocument() const override { return ownerDocument_.lock(); }
    NodePtr getParentNode() const override { return parent_.lock(); }
    NodeType getNodeType() const override { return nodeType_; }
    std::string getNodeName() const override { return nodeName_; }
    std::string getNodeValue() const override { return {}; }
    std::string getNamespaceURI() const override { return namespaceUri_; }
    std::string getPrefix() const override { return prefix_; }
    std::string getLocalName() const override { return localName_; }
    std::shared_ptr<NodeList> getChildNodes() const override {
        return std::make_shared<NodeListImpl>(children_);
    }
    NodePtr getFirstChild() const override {
        return children_.empty() ? nullptr : children_.front();
    }
    NodePtr getLastChild() const override { return children_.empty() ? nullptr : children_.back(); }
    std::shared_ptr<NamedNodeMap> getAttributes() const override { return nullptr; }
    NodePtr insertBefore(const NodePtr& newChild, const NodePtr& refChild) override {
        return insertChild(newChild, refChild);
    }
    NodePtr replaceChild(const NodePtr& newChild, const NodePtr& oldChild) override {
        return exchangeChild(newChild, oldChild);
    }
    NodePtr removeChild(const NodePtr& oldChild) override { return takeChild(oldChild); }
    NodePtr appendChild(const NodePtr& newChild) override { return addChild(newChild); }
    void dispose() override { disposeOfChildren(); }

    NodePtr asNode() override { return asInterface(); }

protected:
    using NodeImpl::NodeImpl;

    std::shared_ptr<I> asInterface() {
        return std::shared_ptr<I>(shared_from_this(), static_cast<I*>(this));
    }
};

}  // namespace kvl::minidom
