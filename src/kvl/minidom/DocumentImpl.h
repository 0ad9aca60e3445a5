#pragma once

#include "kvl/minidom/Document.h"
#include "kvl/minidom/NodeImpl.h"

namespace kvl::minidom {

class DocumentImpl final : public NodeImplT<Document> {
public:
    DocumentImpl();

    void dispose() override;

    ElementPtr getDocumentElement() const override { return documentElement_; }
    ElementPtr createElementNS(const std::string& namespaceUri,
                               const std::string& qualifiedName) override;
    TextPtr createTextNode(const std::string& text) override;

    void setDocumentElement(const ElementPtr& element) { documentElement_ = element; }

private:
    ElementPtr documentElement_;
};

}  // namespace kvl::minidom
