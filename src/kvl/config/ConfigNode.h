#pragma once

#include <memory>
#include <string>
#include <vector>

#include "kvl/config/ConfigException.h"

namespace kvl::config {

/// One element of a settings file, or one of its attributes: a name, a text, no namespaces.
///
/// A node owns its children and attributes and knows its parent; nodes don't move.
class ConfigNode {
public:
    ConfigNode() = default;
    ConfigNode(const ConfigNode&) = delete;
    ConfigNode& operator=(const ConfigNode&) = delete;

    /// The first child of that name, null if there is none. Owned by this node.
    ConfigNode* child(const std::string& childName) const;

    /// A copy of `data`; throws NoDataException if `hasData` is false.
    std::string text() const;

    ConfigNode* parent = nullptr;  // outlives this node; null at the root
    std::string name;
    bool hasData = false;
    /// As it stands in the file: white space at its ends is kept, pieces of nothing but white
    /// space are not. A line end is such a piece, so a text of several lines is joined.
    std::string data;
    std::vector<std::unique_ptr<ConfigNode>> children;
    /// One node for each attribute, with `hasData` true.
    std::vector<std::unique_ptr<ConfigNode>> attributes;
};

/// The text of `node`; `defaultText` if `node` is null or has none.
std::string textOr(const ConfigNode* node, const std::string& defaultText);

/// The text of `node` as a number in the notation of C++, white space around it aside;
/// `defaultNumber` if `node` is null, has no text or its text is no number.
double numberOr(const ConfigNode* node, double defaultNumber);

}  // namespace kvl::config
