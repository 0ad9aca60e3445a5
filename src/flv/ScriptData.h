#pragma once

#include "flv/RefHolder.h"
#include "flv/ScriptDataString.h"

namespace flv {

class ScriptDataIterator;

/// A value of a script tag with its name. Copies share the handle. All operations throw Exception.
class ScriptData {
public:
    ScriptData() = default;
    /// Takes the handle over.
    explicit ScriptData(QlixFLVScriptData* handle) : handle_(handle) {}

    ScriptDataString getName() const;
    double getNumber() const;
    /// Over the members of an object or an array.
    ScriptDataIterator getIterator() const;

private:
    SharedHandle<QlixFLVScriptData> handle_;
};

}  // namespace flv
