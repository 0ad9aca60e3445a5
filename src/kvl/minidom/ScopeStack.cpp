#include "kvl/minidom/ScopeStack.h"

#include <algorithm>
#include <utility>

namespace kvl::minidom {

void ScopeStack::push(Scope scope) { scopes_.push_back(std::move(scope)); }

void ScopeStack::pop() {
    if (!scopes_.empty()) scopes_.pop_back();
}

bool ScopeStack::isBound(const std::string& prefix) const {
    return std::any_of(scopes_.begin(), scopes_.end(),
                       [&](const Scope& scope) { return scope.uriOfPrefix.count(prefix) != 0; });
}

const std::string* ScopeStack::prefixOf(const std::string& uri) const {
    for (auto scope = scopes_.rbegin(); scope != scopes_.rend(); ++scope) {
        const auto hit = scope->prefixOfUri.find(uri);
        if (hit != scope->prefixOfUri.end()) return &hit->second;
    }
    return nullptr;
}

}  // namespace kvl::minidom
