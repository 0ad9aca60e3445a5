#pragma once

#include "kvl/minidom/Node.h"

namespace kvl::minidom {

/// A node that holds characters and no children.
class CharacterData : public Node {
public:
    virtual void setData(const std::string& text) = 0;
    virtual std::string getData() const = 0;
};

class Text : public CharacterData {};

}  // namespace kvl::minidom
