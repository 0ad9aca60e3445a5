#pragma once

#include <string>

#include "flv/RefHolder.h"

namespace flv {

/// A text of a script tag. Copies share the handle.
class ScriptDataString {
public:
    ScriptDataString() = default;
    /// Takes the handle over.
    explicit ScriptDataString(QlixFLVScriptDataString* handle) : handle_(handle) {}

    /// In bytes. Throws Exception.
    std::uint32_t getLength() const;
    /// The bytes as they stand in the file. Throws Exception.
    std::string getText() const;

private:
    SharedHandle<QlixFLVScriptDataString> handle_;
};

}  // namespace flv
