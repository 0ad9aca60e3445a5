#pragma once

#include <memory>
#include <utility>

#include "qlix_hlx/qlix_hlx.h"

namespace hlx {

/// Owns one handle of the library and gives it back, which the library takes even after its stop.
class HLXObjectBase {
public:
    explicit HLXObjectBase(void* handle) : handle_(handle) {}
    HLXObjectBase(const HLXObjectBase&) = delete;
    HLXObjectBase& operator=(const HLXObjectBase&) = delete;
    ~HLXObjectBase() { HLXRelease(handle_); }

    void* handle() const { return handle_; }

private:
    void* handle_;
};

/// The base of all wrappers: copies share one handle. A wrapper without one is null.
class CSmartPtrBase {
public:
    CSmartPtrBase() = default;
    CSmartPtrBase(const CSmartPtrBase&) = default;
    CSmartPtrBase& operator=(const CSmartPtrBase&) = default;
    virtual ~CSmartPtrBase() = default;

    bool isNull() const { return object_ == nullptr; }

protected:
    /// Takes over `handle`; null makes a null wrapper.
    explicit CSmartPtrBase(void* handle)
        : object_(handle == nullptr ? nullptr : std::make_shared<HLXObjectBase>(handle)) {}

    template <typename Handle>
    Handle* handleAs() const {
        return object_ == nullptr ? nullptr : static_cast<Handle*>(object_->handle());
    }

private:
    std::shared_ptr<HLXObjectBase> object_;
};

}  // namespace hlx
