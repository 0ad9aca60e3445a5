#pragma once

#include <string>
#include <vector>

#include "kvl/minidom/Element.h"
#include "kvl/minidom/NodeList.h"

namespace torvo::kzs {

/// All elements below `element` with that local name, of any namespace, in document order.
inline std::vector<kvl::minidom::ElementPtr> elementsBelow(const kvl::minidom::Element& element,
                                                           const std::string& localName) {
    const auto nodes = element.getElementsByTagNameNS("*", localName);
    std::vector<kvl::minidom::ElementPtr> elements;
    for (std::size_t i = 0; i < nodes->getLength(); ++i) {
        elements.push_back(std::dynamic_pointer_cast<kvl::minidom::Element>(nodes->item(i)));
    }
    return elements;
}

}  // namespace torvo::kzs
