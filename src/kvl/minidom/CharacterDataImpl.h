#pragma once

#include <utility>

#include "kvl/minidom/CharacterData.h"
#include "kvl/minidom/NodeImpl.h"

namespace kvl::minidom {

/// A node that holds characters, for the interface `I` that derives from CharacterData.
template <class I>
class CharacterDataImplT : public NodeImplT<I> {
public:
    std::string getNodeValue() const override { return data_; }
    void setData(const std::string& text) override { data_ = text; }
    std::string getData() const override { return data_; }

    void appendData(const std::string& text) { data_ += text; }

protected:
    CharacterDataImplT(std::weak_ptr<Document> ownerDocument, NodeType nodeType,
                       const char* nodeName, std::string data)
        : NodeImplT<I>(std::move(ownerDocument), nodeType, nodeName, ""), data_(std::move(data)) {}

private:
    std::string data_;
};

using CharacterDataImpl = CharacterDataImplT<CharacterData>;

class TextImpl final : public CharacterDataImplT<Text> {
public:
    TextImpl(std::weak_ptr<Document> ownerDocument, std::string data)
        : CharacterDataImplT(std::move(ownerDocument), NodeType::text, "#text", std::move(data)) {}
};

/// Markup that the parser has no handler for, as the characters that it was.
class DefaultImpl final : public CharacterDataImpl {
public:
    DefaultImpl(std::weak_ptr<Document> ownerDocument, std::string data)
        : CharacterDataImpl(std::move(ownerDocument), NodeType::raw, "#raw", std::move(data)) {}
};

}  // namespace kvl::minidom
