#include "flv/Tag.h"

#include "flv/Exception.h"

namespace flv {

FLVTagInfo Tag::getInfo() const {
    FLVTagInfo info{};
    check(QlixFLVTagGetInfo(handle_.get(), &info));
    return info;
}

FLVVideoInfo Tag::getVideoInfo() const {
    FLVVideoInfo info{};
    check(QlixFLVTagGetVideoInfo(handle_.get(), &info));
    return info;
}

FLVAudioInfo Tag::getAudioInfo() const {
    FLVAudioInfo info{};
    check(QlixFLVTagGetAudioInfo(handle_.get(), &info));
    return info;
}

std::uint32_t Tag::getLength() const {
    std::uint32_t length = 0;
    check(QlixFLVTagGetLength(handle_.get(), &length));
    return length;
}

std::uint32_t Tag::copyHeaderAndData(std::uint8_t* buffer, std::uint32_t size) const {
    std::uint32_t copied = 0;
    check(QlixFLVTagCopyHeaderAndData(handle_.get(), size, buffer, &copied));
    return copied;
}

ScriptData Tag::getScriptData() const {
    QlixFLVScriptData* data = nullptr;
    check(QlixFLVTagGetScriptData(handle_.get(), &data));
    return ScriptData(data);
}

}  // namespace flv
