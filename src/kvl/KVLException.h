#pragma once

#include <exception>
#include <string>

namespace kvl {

/// Base of the failures below the front end: a text and nothing else.
///
/// Classes that need a code or a path derive from it and add them.
class KVLException : public std::exception {
public:
    explicit KVLException(std::string message);
    ~KVLException() override;

    const char* what() const noexcept override;

private:
    std::string message_;
};

}  // namespace kvl
