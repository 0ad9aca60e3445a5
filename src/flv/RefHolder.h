#pragma once

#include <boost/smart_ptr/make_shared.hpp>
#include <boost/smart_ptr/shared_ptr.hpp>

#include "qlix_flv/qlix_flv.h"

namespace flv {

inline void releaseHandle(QlixFLVReader* handle) { QlixFLVCloseReader(handle); }
inline void releaseHandle(QlixFLVTagIterator* handle) { QlixFLVReleaseTagIterator(handle); }
inline void releaseHandle(QlixFLVTag* handle) { QlixFLVReleaseTag(handle); }
inline void releaseHandle(QlixFLVScriptData* handle) { QlixFLVReleaseScriptData(handle); }
inline void releaseHandle(QlixFLVScriptDataIterator* handle) {
    QlixFLVReleaseScriptDataIterator(handle);
}
inline void releaseHandle(QlixFLVScriptDataString* handle) {
    QlixFLVReleaseScriptDataString(handle);
}

/// Owns one handle of the library and releases it once. A null handle is legal.
template <class Handle>
class RefHolder {
public:
    explicit RefHolder(Handle* handle) : handle_(handle) {}
    ~RefHolder() {
        if (handle_ != nullptr) releaseHandle(handle_);
    }
    RefHolder(const RefHolder&) = delete;
    RefHolder& operator=(const RefHolder&) = delete;

    Handle* get() const { return handle_; }

private:
    Handle* handle_;
};

/// Shares a handle among copies of a wrapper; default-constructed it shares null.
template <class Handle>
class SharedHandle {
public:
    SharedHandle() = default;
    /// Takes the handle over, also where there is no memory for the holder.
    explicit SharedHandle(Handle* handle) {
        try {
            holder_ = boost::make_shared<RefHolder<Handle>>(handle);
        } catch (...) {
            if (handle != nullptr) releaseHandle(handle);
            throw;
        }
    }

    Handle* get() const { return holder_ ? holder_->get() : nullptr; }

private:
    boost::shared_ptr<RefHolder<Handle>> holder_;
};

}  // namespace flv
