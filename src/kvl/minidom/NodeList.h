#pragma once

#include <cstddef>

#include "kvl/minidom/Node.h"

namespace kvl::minidom {

/// A list of nodes as it was when it was asked for.
class NodeList : public DOMObject {
public:
    /// Null past the end.
    virtual NodePtr item(std::size_t index) const = 0;
    virtual std::size_t getLength() const = 0;
};

/// The attributes of an element, in the order in which they were first set.
class NamedNodeMap : public DOMObject {
public:
    /// Null past the end.
    virtual NodePtr item(std::size_t index) const = 0;
    virtual std::size_t getLength() const = 0;
};

}  // namespace kvl::minidom
