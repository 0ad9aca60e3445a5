#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "kvl/minidom/DocumentImpl.h"
#include "kvl/minidom/ElementImpl.h"
#include "kvl/minidom/QualifiedName.h"
#include "kvl/minidom/ScopeStack.h"

namespace kvl::minidom {

/// Builds a document from the events of a parser in namespace mode.
///
/// Names come as URI, colon and local name, or as the local name alone. Throws
/// NamespaceException for a URI that no open element binds, std::runtime_error for elements
/// that nest too deeply or end otherwise than they began.
class TreeBuilder {
public:
    explicit TreeBuilder(bool keepWhitespace);

    /// Counts for the element that starts next.
    void declareNamespace(const std::string& prefix, const std::string& uri);
    /// `attributes` are pairs of name and value, ended by a null pointer.
    void startElement(const std::string& name, const char* const* attributes);
    void endElement(const std::string& name);
    /// Pieces of one text may be divided anywhere.
    void characterData(std::string_view piece) { pendingText_ += piece; }
    /// Markup without an event of its own; dropped outside the root.
    void rawMarkup(const std::string& markup);

    DocumentPtr document() const { return document_; }

private:
    std::optional<std::string> prefixFor(const std::string& uri) const;
    std::string prefixedName(const QualifiedName& name) const;
    void addAttribute(ElementImpl& element, const std::string& name, const std::string& value);
    void flushText();
    template <class D>
    void addCharacters(const std::string& characters);

    bool keepWhitespace_;
    std::shared_ptr<DocumentImpl> document_;
    std::vector<std::shared_ptr<ElementImpl>> open_;
    ScopeStack scopes_;
    Scope nextScope_;
    std::string pendingText_;
};

}  // namespace kvl::minidom
