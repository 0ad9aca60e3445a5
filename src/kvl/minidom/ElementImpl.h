#pragma once

#include "kvl/minidom/Element.h"
#include "kvl/minidom/NodeImpl.h"

namespace kvl::minidom {

class AttributeImpl final : public NodeImplT<Attribute> {
public:
    AttributeImpl(std::weak_ptr<Document> ownerDocument, std::string namespaceUri,
                  std::string qualifiedName, std::string value);

    std::string getNodeValue() const override { return value_; }
    void dispose() override;

    void setOwnerElement(const ElementPtr& element) { ownerElement_ = element; }
    ElementPtr ownerElement() const { return ownerElement_.lock(); }

private:
    std::string value_;
    std::weak_ptr<Element> ownerElement_;
};

class ElementImpl final : public NodeImplT<Element> {
public:
    ElementImpl(std::weak_ptr<Document> ownerDocument, std::string namespaceUri,
                std::string qualifiedName);

    std::shared_ptr<NamedNodeMap> getAttributes() const override;
    void dispose() override;

    std::string getTagName() const override { return getNodeName(); }
    std::string getAttribute(const std::string& localName) const override;
    void setAttribute(const std::string& name, const std::string& value) override;
    AttributePtr setAttributeNode(const AttributePtr& attribute) override;
    std::shared_ptr<NodeList> getElementsByTagNameNS(const std::string& namespaceUri,
                                                     const std::string& localName) const override;

private:
    std::vector<AttributePtr> attributes_;
};

}  // namespace kvl::minidom
