#include "kvl/minidom/Serialiser.h"

#include "kvl/minidom/Document.h"
#include "kvl/minidom/Element.h"
#include "kvl/minidom/NodeList.h"
#include "kvl/minidom/ScopeStack.h"

namespace kvl::minidom {

namespace {

class Writer {
public:
    Writer(std::ostream& out, const std::string& indent) : out_(out), indent_(indent) {}

    void writeElement(const Node& element, std::size_t depth) {
        indentBy(depth);
        out_ << '<' << element.getNodeName();
        Scope scope = declareNamespaces(element);
        writeAttributes(element, depth);
        out_ << '>';
        endLine();
        scopes_.push(std::move(scope));
        writeChildren(element, depth + 1);
        scopes_.pop();
        indentBy(depth);
        out_ << "</" << element.getNodeName() << '>';
        endLine();
    }

    void endLine() {
        if (!indent_.empty()) out_ << '\n';
    }

private:
    /// Declares what the element's own names need and nobody around it has bound.
    Scope declareNamespaces(const Node& element) {
        Scope scope;
        declare(element, scope);
        scope.bind(element.getPrefix(), element.getNamespaceURI());
        const auto attributes = element.getAttributes();
        for (std::size_t i = 0; i < attributes->getLength(); ++i) {
            const Node& attribute = *attributes->item(i);
            // Without a prefix an attribute has no namespace, whatever its element has.
            if (attribute.getPrefix().empty()) continue;
            declare(attribute, scope);
        }
        return scope;
    }

    void declare(const Node& node, Scope& scope) {
        const std::string uri = node.getNamespaceURI();
        const std::string prefix = node.getPrefix();
        // On purpose: a bound prefix is taken as it is, whatever URI it is bound to.
        // Pinned by SerialiserTest.DoesNotCompareTheUriOfABoundPrefix.
        if (uri.empty() || scopes_.isBound(prefix) || scope.uriOfPrefix.count(prefix) != 0) {
            return;
        }
        out_ << " xmlns" << (prefix.empty() ? "" : ":") << prefix << "=\"" << uri << '"';
        scope.bind(prefix, uri);
    }

    /// On purpose: each attribute stands on a line of its own, behind the indent and a blank,
    /// and the tag's end on the next. Pinned by SerialiserTest.WritesEachAttributeOnItsOwnLine.
    void writeAttributes(const Node& element, std::size_t depth) {
        const auto attributes = element.getAttributes();
        if (attributes->getLength() == 0) return;
        endLine();
        for (std::size_t i = 0; i < attributes->getLength(); ++i) {
            const Node& attribute = *attributes->item(i);
            indentBy(depth + 1);
            out_ << ' ' << attribute.getNodeName() << "=\"" << attribute.getNodeValue() << '"';
            endLine();
        }
        indentBy(depth);
    }

    void writeChildren(const Node& element, std::size_t depth) {
        const auto children = element.getChildNodes();
        for (std::size_t i = 0; i < children->getLength(); ++i) {
            const Node& child = *children->item(i);
            if (child.getNodeType() == NodeType::element) {
                writeElement(child, depth);
                continue;
            }
            // On purpose: an empty text gives a line, too.
            // Pinned by SerialiserTest.WritesAnEmptyTextAsALineOfIndent.
            indentBy(depth);
            out_ << child.getNodeValue();
            endLine();
        }
    }

    void indentBy(std::size_t depth) {
        for (std::size_t i = 0; i < depth; ++i) out_ << indent_;
    }

    std::ostream& out_;
    const std::string& indent_;
    ScopeStack scopes_;
};

}  // namespace

void writeDocument(std::ostream& stream, const Document& document, const std::string& indent) {
    Writer writer(stream, indent);
    stream << R"(<?xml version="1.0" encoding="UTF-8"?>)";
    writer.endLine();
    const ElementPtr root = document.getDocumentElement();
    if (root) writer.writeElement(*root, 0);
}

}  // namespace kvl::minidom
