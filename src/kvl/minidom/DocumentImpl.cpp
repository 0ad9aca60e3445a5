#include "kvl/minidom/DocumentImpl.h"

#include "kvl/minidom/CharacterDataImpl.h"
#include "kvl/minidom/ElementImpl.h"

namespace kvl::minidom {

DocumentImpl::DocumentImpl()
    : NodeImplT(std::weak_ptr<Document>(), NodeType::document, "#document", "") {}

void DocumentImpl::dispose() {
    disposeOfChildren();
    if (documentElement_) documentElement_->dispose();
    documentElement_.reset();
}

ElementPtr DocumentImpl::createElementNS(const std::string& namespaceUri,
                                         const std::string& qualifiedName) {
    return std::make_shared<ElementImpl>(asInterface(), namespaceUri, qualifiedName);
}

TextPtr DocumentImpl::createTextNode(const std::string& text) {
    return std::make_shared<TextImpl>(asInterface(), text);
}

DocumentPtr createDocument(const std::string& namespaceUri, const std::string& qualifiedName) {
    auto document = std::make_shared<DocumentImpl>();
    document->setDocumentElement(document->createElementNS(namespaceUri, qualifiedName));
    return document;
}

}  // namespace kvl::minidom
