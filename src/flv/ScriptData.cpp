#include "flv/ScriptData.h"

#include "flv/Exception.h"
#include "flv/ScriptDataIterator.h"

namespace flv {

ScriptDataString ScriptData::getName() const {
    QlixFLVScriptDataString* name = nullptr;
    check(QlixFLVScriptDataGetName(handle_.get(), &name));
    return ScriptDataString(name);
}

double ScriptData::getNumber() const {
    double number = 0;
    check(QlixFLVScriptDataGetNumber(handle_.get(), &number));
    return number;
}

ScriptDataIterator ScriptData::getIterator() const {
    QlixFLVScriptDataIterator* iterator = nullptr;
    check(QlixFLVScriptDataGetIterator(handle_.get(), &iterator));
    return ScriptDataIterator(iterator);
}

}  // namespace flv
