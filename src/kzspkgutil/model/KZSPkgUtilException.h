#pragma once

#include <cstdint>
#include <string>

#include "kvl/KVLException.h"

namespace torvo::kzspkgutil {

/// Code of a sample that the 24-bit size of a tag can't tell.
constexpr std::uint32_t kTagTooLarge = 5;

/// A failure of the pipeline. Its text is "Error (" code ") - " message.
class KZSPkgUtilException : public kvl::KVLException {
public:
    KZSPkgUtilException(std::uint32_t code, const std::string& message);

    std::uint32_t code() const { return code_; }

private:
    std::uint32_t code_;
};

/// One that concerns a file. Code 1: it doesn't exist; 2: it can't be accessed; 3: it has no track
/// that this program supports.
class KZSPkgUtilFileException : public KZSPkgUtilException {
public:
    KZSPkgUtilFileException(std::uint32_t code, const std::string& message, std::string path);

    const std::string& path() const { return path_; }

private:
    std::string path_;
};

/// Code 3: "No supported tracks in file 'path'".
class NoSupportedTracksException : public KZSPkgUtilFileException {
public:
    explicit NoSupportedTracksException(const std::string& path);
};

}  // namespace torvo::kzspkgutil
