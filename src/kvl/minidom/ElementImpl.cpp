#include "kvl/minidom/ElementImpl.h"

#include <algorithm>
#include <utility>

#include "kvl/minidom/DOMException.h"

namespace kvl::minidom {

namespace {

bool matches(const std::string& pattern, const std::string& name) {
    return pattern == "*" || pattern == name;
}

void collectElements(const NodeImpl& parent, const std::string& namespaceUri,
                     const std::string& localName, std::vector<NodePtr>& found) {
    for (const NodePtr& child : parent.children()) {
        if (child->getNodeType() != NodeType::element) continue;
        if (matches(namespaceUri, child->getNamespaceURI()) &&
            matches(localName, child->getLocalName())) {
            found.push_back(child);
        }
        collectElements(NodeImpl::of(child), namespaceUri, localName, found);
    }
}

void setOwner(const AttributePtr& attribute, const ElementPtr& element) {
    dynamic_cast<AttributeImpl&>(*attribute).setOwnerElement(element);
}

}  // namespace

AttributeImpl::AttributeImpl(std::weak_ptr<Document> ownerDocument, std::string namespaceUri,
                             std::string qualifiedName, std::string value)
    : NodeImplT(std::move(ownerDocument), NodeType::attribute, std::move(qualifiedName),
                std::move(namespaceUri)),
      value_(std::move(value)) {}

void AttributeImpl::dispose() {
    disposeOfChildren();
    ownerElement_.reset();
}

ElementImpl::ElementImpl(std::weak_ptr<Document> ownerDocument, std::string namespaceUri,
                         std::string qualifiedName)
    : NodeImplT(std::move(ownerDocument), NodeType::element, std::move(qualifiedName),
                std::move(namespaceUri)) {}

std::shared_ptr<NamedNodeMap> ElementImpl::getAttributes() const {
    return std::make_shared<NamedNodeMapImpl>(
        std::vector<NodePtr>(attributes_.begin(), attributes_.end()));
}

void ElementImpl::dispose() {
    disposeOfChildren();
    for (const AttributePtr& attribute : attributes_) attribute->dispose();
    attributes_.clear();
}

std::string ElementImpl::getAttribute(const std::string& localName) const {
    // On purpose: any namespace will do.
    // Pinned by ElementTest.GetAttributeTakesTheFirstOfThatLocalNameInAnyNamespace.
    const auto hit = std::find_if(
        attributes_.begin(), attributes_.end(),
        [&](const AttributePtr& attribute) { return attribute->getLocalName() == localName; });
    return hit == attributes_.end() ? std::string() : (*hit)->getNodeValue();
}

void ElementImpl::setAttribute(const std::string& name, const std::string& value) {
    setAttributeNode(std::make_shared<AttributeImpl>(ownerDocument_, "", name, value));
}

AttributePtr ElementImpl::setAttributeNode(const AttributePtr& attribute) {
    if (!attribute) throw DOMExceptionImpl(DOMException::kNotFound);
    const auto place =
        std::find_if(attributes_.begin(), attributes_.end(), [&](const AttributePtr& present) {
            return present->getNamespaceURI() == attribute->getNamespaceURI() &&
                   present->getLocalName() == attribute->getLocalName();
        });
    AttributePtr replaced;
    if (place == attributes_.end()) {
        attributes_.push_back(attribute);
    } else {
        replaced = std::exchange(*place, attribute);
        setOwner(replaced, nullptr);
    }
    setOwner(attribute, asInterface());
    return replaced;
}

std::shared_ptr<NodeList> ElementImpl::getElementsByTagNameNS(const std::string& namespaceUri,
                                                              const std::string& localName) const {
    std::vector<NodePtr> found;
    collectElements(*this, namespaceUri, localName, found);
    return std::make_shared<NodeListImpl>(std::move(found));
}

}  // namespace kvl::minidom
