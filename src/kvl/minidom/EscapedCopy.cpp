#include "kvl/minidom/EscapedCopy.h"

#include <memory>
#include <string>
#include <string_view>

#include "kvl/minidom/CharacterDataImpl.h"
#include "kvl/minidom/DocumentImpl.h"
#include "kvl/minidom/ElementImpl.h"

namespace kvl::minidom {

namespace {

const char* referenceFor(char c) {
    switch (c) {
        case '&':
            return "&amp;";
        case '<':
            return "&lt;";
        case '>':
            return "&gt;";
        case '"':
            return "&quot;";
        default:
            return nullptr;
    }
}

/// Inside an attribute these would come back as blanks.
const char* referenceForWhiteSpace(char c) {
    switch (c) {
        case '\t':
            return "&#9;";
        case '\n':
            return "&#10;";
        case '\r':
            return "&#13;";
        default:
            return nullptr;
    }
}

/// `text` with `lookUp(c)` in the place of each character c for which it isn't null.
std::string replaced(const std::string& text, const char* (*lookUp)(char c)) {
    std::string out;
    for (const char c : text) {
        if (const char* reference = lookUp(c)) {
            out += reference;
        } else {
            out += c;
        }
    }
    return out;
}

std::string escapedText(const std::string& text) { return replaced(text, referenceFor); }

std::string escapedAttribute(const std::string& value) {
    return replaced(escapedText(value), referenceForWhiteSpace);
}

bool opensCdata(const std::string& raw) {
    constexpr std::string_view kOpening = "<![CDATA[";
    return raw.size() >= kOpening.size() &&
           raw.compare(raw.size() - kOpening.size(), kOpening.size(), kOpening) == 0;
}

class Copier {
public:
    ElementPtr copyOf(const Node& element) {
        ElementPtr copy = document_->createElementNS(escapedAttribute(element.getNamespaceURI()),
                                                     element.getNodeName());
        copyAttributes(element, *copy);
        copyChildren(element, *copy);
        return copy;
    }

    std::shared_ptr<DocumentImpl> document() const { return document_; }

private:
    void copyAttributes(const Node& from, Element& to) {
        const auto attributes = from.getAttributes();
        for (std::size_t i = 0; i < attributes->getLength(); ++i) {
            const Node& attribute = *attributes->item(i);
            to.setAttributeNode(std::make_shared<AttributeImpl>(
                document_, escapedAttribute(attribute.getNamespaceURI()), attribute.getNodeName(),
                escapedAttribute(attribute.getNodeValue())));
        }
    }

    void copyChildren(const Node& from, Element& to) {
        const auto children = from.getChildNodes();
        bool isCdata = false;
        for (std::size_t i = 0; i < children->getLength(); ++i) {
            const Node& child = *children->item(i);
            const std::string value = child.getNodeValue();
            if (child.getNodeType() == NodeType::element) {
                to.appendChild(copyOf(child));
            } else if (child.getNodeType() == NodeType::raw) {
                to.appendChild(std::make_shared<DefaultImpl>(document_, value));
                isCdata = opensCdata(value);
            } else {
                to.appendChild(document_->createTextNode(isCdata ? value : escapedText(value)));
            }
        }
    }

    std::shared_ptr<DocumentImpl> document_ = std::make_shared<DocumentImpl>();
};

}  // namespace

DocumentPtr escapedCopy(const Document& document) {
    Copier copier;
    const ElementPtr root = document.getDocumentElement();
    if (root) copier.document()->setDocumentElement(copier.copyOf(*root));
    return copier.document();
}

}  // namespace kvl::minidom
