#include "kvl/minidom/NodeImpl.h"

#include <algorithm>
#include <utility>

#include "kvl/minidom/DOMException.h"
#include "kvl/minidom/QualifiedName.h"

namespace kvl::minidom {

NodeImpl::NodeImpl(std::weak_ptr<Document> ownerDocument, NodeType nodeType,
                   std::string qualifiedName, std::string namespaceUri)
    : ownerDocument_(std::move(ownerDocument)),
      nodeType_(nodeType),
      nodeName_(std::move(qualifiedName)),
      namespaceUri_(std::move(namespaceUri)) {
    QualifiedName name = splitName(nodeName_);
    prefix_ = std::move(name.prefix);
    localName_ = std::move(name.localName);
}

NodeImpl& NodeImpl::of(const NodePtr& node) {
    if (!node) throw DOMExceptionImpl(DOMException::kNotFound);
    return dynamic_cast<NodeImpl&>(*node);
}

std::vector<NodePtr>::iterator NodeImpl::find(const NodePtr& child) {
    const auto place = std::find(children_.begin(), children_.end(), child);
    if (!child || place == children_.end()) throw DOMExceptionImpl(DOMException::kNotFound);
    return place;
}

void NodeImpl::removeIfChild(const NodePtr& child) {
    children_.erase(std::remove(children_.begin(), children_.end(), child), children_.end());
}

NodePtr NodeImpl::insertChild(const NodePtr& newChild, const NodePtr& refChild) {
    // On purpose: null doesn't mean "at the end" here.
    // Pinned by NodeTest.InsertBeforeRefusesANullReference.
    find(refChild);
    NodeImpl& added = of(newChild);
    if (newChild == refChild) return newChild;
    removeIfChild(newChild);
    children_.insert(find(refChild), newChild);
    added.setParent(asNode());
    return newChild;
}

NodePtr NodeImpl::exchangeChild(const NodePtr& newChild, const NodePtr& oldChild) {
    find(oldChild);
    NodeImpl& added = of(newChild);
    if (newChild == oldChild) return newChild;
    removeIfChild(newChild);
    const auto place = find(oldChild);
    of(*place).setParent(nullptr);
    *place = newChild;
    added.setParent(asNode());
    return newChild;
}

NodePtr NodeImpl::takeChild(const NodePtr& oldChild) {
    const auto place = find(oldChild);
    NodePtr taken = *place;
    children_.erase(place);
    of(taken).setParent(nullptr);
    return taken;
}

NodePtr NodeImpl::addChild(const NodePtr& newChild) {
    NodeImpl& added = of(newChild);
    removeIfChild(newChild);
    children_.push_back(newChild);
    added.setParent(asNode());
    return newChild;
}

void NodeImpl::disposeOfChildren() {
    for (const NodePtr& child : children_) {
        child->dispose();
        of(child).setParent(nullptr);
    }
    children_.clear();
}

}  // namespace kvl::minidom
