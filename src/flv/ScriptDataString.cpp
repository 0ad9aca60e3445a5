#include "flv/ScriptDataString.h"

#include "flv/Exception.h"

namespace flv {

std::uint32_t ScriptDataString::getLength() const {
    std::uint32_t length = 0;
    check(QlixFLVScriptDataStringGetLength(handle_.get(), &length));
    return length;
}

std::string ScriptDataString::getText() const {
    std::string text(getLength(), '\0');
    std::uint32_t copied = 0;
    check(QlixFLVScriptDataStringCopyData(handle_.get(), static_cast<std::uint32_t>(text.size()),
                                          reinterpret_cast<std::uint8_t*>(text.data()), &copied));
    text.resize(copied);
    return text;
}

}  // namespace flv
