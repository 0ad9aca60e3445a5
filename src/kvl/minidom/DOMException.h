#pragma once

#include <exception>

namespace kvl::minidom {

/// A change of the tree that can't be made.
class DOMException {
public:
    /// The node that was named isn't there.
    static constexpr int kNotFound = 8;

    virtual int code() const noexcept = 0;

    virtual ~DOMException() = default;
};

/// What is thrown. It is a standard exception too, so that no handler misses it.
class DOMExceptionImpl final : public DOMException, public std::exception {
public:
    explicit DOMExceptionImpl(int code) : code_(code) {}

    int code() const noexcept override { return code_; }
    const char* what() const noexcept override { return "DOM node not found"; }

private:
    int code_;
};

}  // namespace kvl::minidom
