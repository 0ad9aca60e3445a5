#pragma once

#include <cstdint>
#include <exception>
#include <string>
#include <utility>

namespace kvl::minidom {

/// A name's namespace URI is bound to no prefix in any open element.
class NamespaceException : public std::exception {};

/// The text isn't well-formed.
class XMLParseException : public std::exception {
public:
    XMLParseException(int errorCode, std::string errorMessage, std::uint64_t atLine,
                      std::uint64_t atColumn)
        : code(errorCode), message(std::move(errorMessage)), line(atLine), column(atColumn) {}

    const char* what() const noexcept override { return message.c_str(); }

    int code;              ///< the parser's error code
    std::string message;   ///< the parser's text for it
    std::uint64_t line;    ///< from 1
    std::uint64_t column;  ///< from 0
};

}  // namespace kvl::minidom
