#pragma once

#include "flv/RefHolder.h"
#include "flv/ScriptData.h"

namespace flv {

/// Walks the members of a script value. Copies share the handle and with it the position.
class ScriptDataIterator {
public:
    ScriptDataIterator() = default;
    /// Takes the handle over.
    explicit ScriptDataIterator(QlixFLVScriptDataIterator* handle) : handle_(handle) {}

    /// Throws Exception.
    bool hasNext() const;
    /// Throws Exception.
    ScriptData next();

private:
    SharedHandle<QlixFLVScriptDataIterator> handle_;
};

}  // namespace flv
