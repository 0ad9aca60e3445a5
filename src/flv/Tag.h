#pragma once

#include <cstdint>

#include "flv/RefHolder.h"
#include "flv/ScriptData.h"

namespace flv {

/// A tag of the file. Copies share the handle. All operations throw Exception, also where there is
/// no tag.
class Tag {
public:
    /// No tag.
    Tag() = default;
    /// Takes the handle over.
    explicit Tag(QlixFLVTag* handle) : handle_(handle) {}

    FLVTagInfo getInfo() const;
    /// Of a video tag that has a body.
    FLVVideoInfo getVideoInfo() const;
    /// Of an audio tag that has a body.
    FLVAudioInfo getAudioInfo() const;
    /// Header and body in bytes.
    std::uint32_t getLength() const;
    /// Copies header and body as stored, at most `size` bytes; returns how many.
    std::uint32_t copyHeaderAndData(std::uint8_t* buffer, std::uint32_t size) const;
    /// Of a script tag.
    ScriptData getScriptData() const;

private:
    SharedHandle<QlixFLVTag> handle_;
};

}  // namespace flv
