#pragma once

#include <map>
#include <string>
#include <vector>

namespace kvl::minidom {

/// The namespaces that one element binds, in both directions.
struct Scope {
    void bind(const std::string& prefix, const std::string& uri) {
        uriOfPrefix[prefix] = uri;
        prefixOfUri[uri] = prefix;
    }

    std::map<std::string, std::string> uriOfPrefix;
    std::map<std::string, std::string> prefixOfUri;
};

/// The scopes of all open elements, the innermost last.
class ScopeStack {
public:
    void push(Scope scope);
    /// Does nothing if no scope is left.
    void pop();

    bool isBound(const std::string& prefix) const;
    /// The prefix that the innermost scope which knows `uri` has for it, null if none does.
    /// Lives until the scope is popped.
    const std::string* prefixOf(const std::string& uri) const;

private:
    std::vector<Scope> scopes_;
};

}  // namespace kvl::minidom
