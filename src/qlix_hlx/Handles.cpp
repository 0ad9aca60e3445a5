#include "qlix_hlx/Handles.h"

#include <unordered_set>

namespace qlix::hlx {
namespace {

/// Never destroyed: handles may be given back while the process ends.
std::unordered_set<Object*>& liveObjects() {
    static auto* objects = new std::unordered_set<Object*>;
    return *objects;
}

}  // namespace

Object::Object() { liveObjects().insert(this); }

Object::~Object() { liveObjects().erase(this); }

Object* Object::find(void* handle) {
    auto* object = static_cast<Object*>(handle);
    return liveObjects().count(object) == 0 ? nullptr : object;
}

void Object::wipeAll() {
    for (Object* object : liveObjects()) object->wipe();
}

}  // namespace qlix::hlx
