#include "kvl/minidom/TreeBuilder.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

#include "kvl/WhiteSpace.h"
#include "kvl/minidom/CharacterDataImpl.h"
#include "kvl/minidom/ParseExceptions.h"

namespace kvl::minidom {

namespace {

/// Trees are walked recursively, so a hostile file must not choose the depth.
constexpr std::size_t kMaxDepth = 256;

}  // namespace

TreeBuilder::TreeBuilder(bool keepWhitespace)
    : keepWhitespace_(keepWhitespace), document_(std::make_shared<DocumentImpl>()) {}

void TreeBuilder::declareNamespace(const std::string& prefix, const std::string& uri) {
    nextScope_.bind(prefix, uri);
}

std::optional<std::string> TreeBuilder::prefixFor(const std::string& uri) const {
    if (uri.empty()) return "";
    const std::string* prefix = scopes_.prefixOf(uri);
    if (prefix == nullptr) return std::nullopt;
    return *prefix;
}

std::string TreeBuilder::prefixedName(const QualifiedName& name) const {
    const std::optional<std::string> prefix = prefixFor(name.prefix);
    if (!prefix) throw NamespaceException();
    return joinName(*prefix, name.localName);
}

void TreeBuilder::startElement(const std::string& name, const char* const* attributes) {
    flushText();
    if (open_.size() >= kMaxDepth) throw std::runtime_error("XML elements are nested too deeply");
    // Pushed before any lookup: an element's own declarations count for its own names.
    scopes_.push(std::exchange(nextScope_, Scope()));
    const QualifiedName parts = splitName(name);
    auto element = std::make_shared<ElementImpl>(document_, parts.prefix, prefixedName(parts));
    for (; attributes[0] != nullptr; attributes += 2) {
        addAttribute(*element, attributes[0], attributes[1]);
    }
    if (!document_->getDocumentElement()) document_->setDocumentElement(element);
    open_.push_back(std::move(element));
}

void TreeBuilder::addAttribute(ElementImpl& element, const std::string& name,
                               const std::string& value) {
    const QualifiedName parts = splitName(name);
    element.setAttributeNode(
        std::make_shared<AttributeImpl>(document_, parts.prefix, prefixedName(parts), value));
}

void TreeBuilder::endElement(const std::string& name) {
    flushText();
    const std::optional<std::string> prefix = prefixFor(splitName(name).prefix);
    if (!prefix) throw std::runtime_error("XML element ends in an unknown namespace");
    scopes_.pop();
    if (open_.empty() || open_.back()->getPrefix() != *prefix) {
        throw std::runtime_error("XML element ends under another prefix");
    }
    const auto ended = std::move(open_.back());
    open_.pop_back();
    if (!open_.empty()) open_.back()->appendChild(ended);
}

void TreeBuilder::rawMarkup(const std::string& markup) {
    flushText();
    if (open_.empty() || isWhiteSpace(markup)) return;
    // On purpose: comments and the like are kept, as nodes of a type of their own.
    // Pinned by ParserTest.KeepsCommentsAndOtherMarkupAsRawNodes.
    addCharacters<DefaultImpl>(keepWhitespace_ ? markup : trimmed(markup));
}

/// Each line counts by itself, so that wrapped base64 is joined; but no more than a line end
/// may divide a text, or "R&amp;D one" would lose a blank wherever the parser divides it.
void TreeBuilder::flushText() {
    const std::string text = std::exchange(pendingText_, std::string());
    for (std::size_t begin = 0; begin < text.size();) {
        const std::size_t end = std::min(text.find('\n', begin), text.size());
        const std::string line = text.substr(begin, end - begin);
        begin = end + 1;
        // On purpose: white space alone never becomes a node, not even when it is to be kept.
        // Pinned by ParserTest.DropsLinesOfOnlyWhiteSpace.
        if (isWhiteSpace(line)) continue;
        addCharacters<TextImpl>(keepWhitespace_ ? line : trimmed(line));
    }
}

template <class D>
void TreeBuilder::addCharacters(const std::string& characters) {
    const auto last = std::dynamic_pointer_cast<D>(open_.back()->getLastChild());
    if (last) {
        last->appendData(characters);
    } else {
        open_.back()->appendChild(std::make_shared<D>(document_, characters));
    }
}

}  // namespace kvl::minidom
